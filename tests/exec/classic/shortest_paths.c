/* Graphs: shortest paths with a scan and with a heap, all pairs, spanning tree, order of dependencies, depth first. */
#include <stdio.h>

#define N 30
#define FAR 1000000
static short weight[N][N];
static int distance[N], previous[N], all[N][N];
static struct edge { short from, to, cost; } edges[N * 6];
static int edge_count;

static void make_graph(void)
{
    unsigned seed = 99;
    int i, k;
    for (i = 0; i < N; i++)
        for (k = 0; k < 4; k++) {
            int to;
            seed = seed * 69069u + 1u;
            to = (int)(seed >> 16) % N;
            if (to == i || weight[i][to])
                continue;
            weight[i][to] = (short)(1 + (seed >> 8) % 50);
            edges[edge_count].from = (short)i;
            edges[edge_count].to = (short)to;
            edges[edge_count++].cost = weight[i][to];
        }
}

static void by_scan(int source)
{
    char done[N] = {0};
    int i, round;
    for (i = 0; i < N; i++) {
        distance[i] = FAR;
        previous[i] = -1;
    }
    distance[source] = 0;
    for (round = 0; round < N; round++) {
        int best = -1;
        for (i = 0; i < N; i++)
            if (!done[i] && (best < 0 || distance[i] < distance[best]))
                best = i;
        done[best] = 1;
        for (i = 0; i < N; i++)
            if (weight[best][i] && distance[best] + weight[best][i] < distance[i]) {
                distance[i] = distance[best] + weight[best][i];
                previous[i] = best;
            }
    }
}

static struct { int cost, vertex; } heap[N * 8];
static int heap_size;

static void push(int cost, int vertex)
{
    int i = heap_size++;
    while (i > 0 && heap[(i - 1) / 2].cost > cost) {
        heap[i] = heap[(i - 1) / 2];
        i = (i - 1) / 2;
    }
    heap[i].cost = cost;
    heap[i].vertex = vertex;
}

static int pop(int *cost)
{
    int top = heap[0].vertex, i = 0, child, last = --heap_size;
    *cost = heap[0].cost;
    while ((child = 2 * i + 1) < heap_size) {
        if (child + 1 < heap_size && heap[child + 1].cost < heap[child].cost)
            child++;
        if (heap[last].cost <= heap[child].cost)
            break;
        heap[i] = heap[child];
        i = child;
    }
    heap[i] = heap[last];
    return top;
}

static int by_heap(int source)
{
    int found[N], i, wrong = 0, cost;
    for (i = 0; i < N; i++)
        found[i] = FAR;
    push(found[source] = 0, source);
    while (heap_size > 0) {
        int v = pop(&cost);
        if (cost > found[v])
            continue;
        for (i = 0; i < N; i++)
            if (weight[v][i] && cost + weight[v][i] < found[i])
                push(found[i] = cost + weight[v][i], i);
    }
    for (i = 0; i < N; i++)
        wrong += found[i] != distance[i];
    return wrong;
}

static void all_pairs(void)
{
    int i, j, k;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++)
            all[i][j] = i == j ? 0 : weight[i][j] ? weight[i][j] : FAR;
    for (k = 0; k < N; k++)
        for (i = 0; i < N; i++)
            for (j = 0; j < N; j++)
                if (all[i][k] + all[k][j] < all[i][j])
                    all[i][j] = all[i][k] + all[k][j];
}

static int parent[N];
static int root(int v) { while (parent[v] != v) v = parent[v] = parent[parent[v]]; return v; }

static int spanning_tree(void)
{
    int i, j, total = 0;
    for (i = 0; i < N; i++)
        parent[i] = i;
    for (i = 1; i < edge_count; i++) {
        struct edge e = edges[i];
        for (j = i; j > 0 && edges[j - 1].cost > e.cost; j--)
            edges[j] = edges[j - 1];
        edges[j] = e;
    }
    for (i = 0; i < edge_count; i++) {
        int a = root(edges[i].from), b = root(edges[i].to);
        if (a != b) {
            parent[a] = b;
            total += edges[i].cost;
        }
    }
    return total;
}

static char seen[N];
static int order[N], ordered;
static void visit(int v)
{
    int i;
    seen[v] = 1;
    for (i = v + 1; i < N; i++)
        if (weight[v][i] && !seen[i])
            visit(i);
    order[ordered++] = v;
}

int main(void)
{
    int i, sum = 0, v;
    make_graph();
    by_scan(0);
    for (i = 0; i < N; i++)
        printf("%d ", distance[i]);
    printf("\n");
    for (v = 17; v >= 0; v = previous[v])
        printf("%d<", v);
    printf("\n%d\n", by_heap(0));
    all_pairs();
    for (i = 0; i < N; i++)
        sum += all[0][i] == distance[i] ? all[i][3] % 1000 : 10000;
    printf("%d %d %d\n", edge_count, sum, spanning_tree());
    for (i = 0; i < N; i++)
        if (!seen[i])
            visit(i);
    for (i = 0; i < N; i++)
        printf("%d ", order[i]);
    printf("\n");
    return 0;
}
