#include "run_fixture.h"

#include <cstring>

namespace velkor {
namespace {

class ZonesTest : public RunTest {};

TEST_F(ZonesTest, RequestsShareABufferUpToHalfOfIt) {
  (void)lalloc(16384);
  EXPECT_EQ(local_buffer(0).capacity, 32768u);
  (void)lalloc(16384);
  EXPECT_EQ(local_buffer_count(), 1);
  (void)lalloc(16385);
  EXPECT_EQ(local_buffer_count(), 2);
  EXPECT_EQ(local_buffer(0).capacity, 16385u);
}

TEST_F(ZonesTest, OnlyTheEightNewestBuffersAreSearched) {
  (void)lalloc(16384); // half of this one stays free
  for (int i = 0; i < 7; ++i)
    (void)lalloc(32768);
  EXPECT_EQ(local_buffer_count(), 8);
  (void)lalloc(1000);
  EXPECT_EQ(local_buffer_count(), 8) << "the eighth buffer still serves";
  (void)lalloc(32768);
  (void)lalloc(1000);
  EXPECT_EQ(local_buffer_count(), 10) << "the ninth does not";
}

TEST_F(ZonesTest, RecordsAreAlignedAndKeepTheirBytes) {
  char *text = copy_text(1, "abc");
  NODE *node = make_icon(7, INT);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(node) % alignof(NODE), 0u);
  EXPECT_STREQ(text, "abc");
}

TEST_F(ZonesTest, ZoneZeroIsGlobal) {
  std::strcpy(static_cast<char *>(zalloc(0, 4)), "abc");
  EXPECT_EQ(local_buffer_count(), 0);
  (void)zalloc(2, 4);
  EXPECT_EQ(local_buffer_count(), 1);
  EXPECT_EQ(zone_statistics().global_calls, 1u);
}

TEST_F(ZonesTest, FreedRecordsServeAgainUntilTheFunctionEnds) {
  NODE *first = make_icon(1, INT);
  erase_node(first);
  NODE *second = make_icon(2, INT);
  EXPECT_EQ(first, second);
  erase_node(second);
  end_of_function();
  EXPECT_EQ(local_buffer_count(), 0);
  (void)make_icon(3, INT);
  EXPECT_EQ(local_buffer(0).used, sizeof(NODE)) << "a node of a new buffer, not of the old list";
  EXPECT_EQ(zone_statistics().local_calls, 1u);
  EXPECT_EQ(zone_statistics().max_local_calls, 1u);
}

} // namespace
} // namespace velkor
