# Reads a GDL file and prints its nodes and edges, a line each, in the order of their names.
#
# A graph that Graph::Easy does not accept, and any warning of it, is an error: status 1.
use strict;
use warnings;

# Graph::Easy takes a word that begins a graph's attribute for a node or an edge where it begins
# with "node" (node_alignment), and "backedge:{" for an attribute; GDL knows both by the whole word.
package GdlReader;
use parent 'Graph::Easy::Parser::VCG';

sub _match_graph_attribute {
  my $element = qr/(?:node|(?:near|bentnear|back)?edge|graph)\s*:/;
  return qr/^\s*((?!$element)\w+\s*:\s*(?:"(?:\\"|[^"])*"|\S+))(?:\s+|\z)/;
}

package main;

$SIG{__WARN__} = sub { die $_[0] };
open(my $file, '<', $ARGV[0]) or die "$ARGV[0]: $!\n";
my $text = do { local $/; <$file> };
$text =~ s/\f[bn]//g;    # bold letters and back: the reader takes a form feed for a blank
my $parser = GdlReader->new();
my $graph = $parser->from_text($text);
die $parser->error . "\n" if $parser->error;
die "no graph\n" unless $graph;

print "graph ", $graph->attribute('label'), "\n";
print "node ", $_->name, " [", $_->label, "] ", $_->attribute('shape'), "\n"
  for sort { $a->name cmp $b->name } $graph->nodes;
print "edge ", $_->from->name, " ", $_->to->name, " ", $_->style, " ", $_->attribute('color'), "\n"
  for sort { $a->from->name . ' ' . $a->to->name cmp $b->from->name . ' ' . $b->to->name }
  $graph->edges;
