#pragma once

#include <ostream>

#include "Session/Trace.h"

namespace Session {

// Writes `trace` as a Graphviz graph, for `dot -Tsvg`: the ingress and every
// router that answered are nodes, named by address; each hop to the next is
// an edge labelled with the labels sent down it and the destinations that
// take it. The egress is green; where a path failed, the router and the edge
// into it are red, with the code; a hop that did not answer is a dashed
// "*" node.
void writeDot(const Trace &trace, std::ostream &out);

} // namespace Session
