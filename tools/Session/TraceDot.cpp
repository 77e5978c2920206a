#include "Session/TraceDot.h"

#include <algorithm>
#include <string>
#include <vector>

#include "Session/Format.h"

namespace Session {

namespace {

struct Node {
  std::string id;
  std::string label;
  std::string style;
};

struct Edge {
  std::string from;
  std::string to;
  std::string labels;
  std::vector<Wirx::IpGenAddr> destinations;
  bool failed = false;
};

// Nodes and edges in the order they are first met, each once: paths of a
// tree share their first hops.
class Graph {
public:
  void nodeIs(const std::string &id, const std::string &label,
              const std::string &style) {
    const auto it = std::find_if(nodes_.begin(), nodes_.end(),
                                 [&](const Node &n) { return n.id == id; });
    if (it == nodes_.end()) {
      nodes_.push_back(Node{id, label, style});
    } else if (!style.empty()) {
      it->label = label;
      it->style = style;
    }
  }

  void edgeIs(const std::string &from, const std::string &to,
              const std::string &labels,
              const std::vector<Wirx::IpGenAddr> &destinations, bool failed) {
    auto it = std::find_if(edges_.begin(), edges_.end(), [&](const Edge &e) {
      return e.from == from && e.to == to;
    });
    if (it == edges_.end()) {
      edges_.push_back(Edge{from, to, labels, {}, false});
      it = edges_.end() - 1;
    }
    for (const Wirx::IpGenAddr &dst : destinations) {
      if (std::find(it->destinations.begin(), it->destinations.end(), dst) ==
          it->destinations.end()) {
        it->destinations.push_back(dst);
      }
    }
    std::sort(it->destinations.begin(), it->destinations.end());
    it->failed = it->failed || failed;
  }

  void write(const std::string &title, std::ostream &out) const {
    out << "digraph \"lsp-trace\" {\n"
        << "  label=\"" << title << "\";\n"
        << "  labelloc=t;\n"
        << "  node [shape=box, fontname=\"monospace\"];\n"
        << "  edge [fontname=\"monospace\", fontsize=10];\n";
    for (const Node &node : nodes_) {
      out << "  \"" << node.id << "\" [label=\"" << node.label << "\""
          << (node.style.empty() ? "" : ", " + node.style) << "];\n";
    }
    for (const Edge &edge : edges_) {
      out << "  \"" << edge.from << "\" -> \"" << edge.to << "\" [label=\""
          << edge.labels;
      if (!edge.destinations.empty()) {
        out << "\\n" << destinationsText(edge.destinations);
      }
      out << "\"" << (edge.failed ? ", color=red, fontcolor=red" : "")
          << "];\n";
    }
    out << "}\n";
  }

private:
  std::vector<Node> nodes_;
  std::vector<Edge> edges_;
};

std::string title(const Trace &trace) {
  return std::string(trace.tree ? "LSP tree trace " : "LSP trace ") +
         trace.target.fec.stringValue() + " from " +
         trace.ingress.src.stringValue();
}

} // namespace

void writeDot(const Trace &trace, std::ostream &out) {
  Graph graph;
  const std::string ingress = trace.ingress.src.stringValue();
  graph.nodeIs(ingress, "ingress\\n" + ingress, "");
  for (const Path &path : trace.paths) {
    std::string from = ingress;
    std::string sent = labelsText(trace.ingressMapping.labelStack);
    for (std::size_t i = 0; i < path.hops.size(); ++i) {
      const Hop &hop = path.hops[i];
      const bool last = i + 1 == path.hops.size();
      const bool failed = last && path.end == Path::End::failed;
      std::string to;
      if (hop.lost) {
        to = "* TTL " + std::to_string(hop.ttl) + " after " + from;
        graph.nodeIs(to, "*\\nTTL " + std::to_string(hop.ttl), "style=dashed");
      } else {
        to = hop.reply.from.stringValue();
        const std::string code = codeText(hop.reply.code, hop.reply.subcode);
        if (failed) {
          graph.nodeIs(to, to + "\\n" + code, "color=red, fontcolor=red");
        } else if (last && path.end == Path::End::egress) {
          graph.nodeIs(to, to + "\\n" + code, "color=darkgreen, penwidth=2");
        } else {
          graph.nodeIs(to, to, "");
        }
      }
      graph.edgeIs(from, to, sent, path.destinations, failed);
      from = to;
      sent =
          hop.next >= 0 && std::size_t(hop.next) < hop.reply.mappings.size()
              ? labelsText(hop.reply.mappings[std::size_t(hop.next)].labelStack)
              : "?";
    }
  }
  graph.write(title(trace), out);
}

} // namespace Session
