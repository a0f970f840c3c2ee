// gff3.cpp -- gene models from GFF3: genes, their transcripts and the transcripts' parts, by ID and Parent.
#include <algorithm>
#include <map>
#include <sstream>

#include "annotation/annotation.h"

namespace trelvane::annotation::detail {
namespace {

// The value of key in a column 9 ("ID=t1;Parent=g1;Name=HBB"), "%" escapes kept.
std::string attribute(const std::string& column, const std::string& key) {
  std::size_t from = 0;
  while (from <= column.size()) {
    const std::size_t end = std::min(column.find(';', from), column.size());
    const std::string pair = column.substr(from, end - from);
    const std::size_t eq = pair.find('=');
    std::size_t k = pair.find_first_not_of(' ');
    if (eq != std::string::npos && k != std::string::npos && pair.substr(k, eq - k) == key) return pair.substr(eq + 1);
    from = end + 1;
  }
  return "";
}

std::vector<std::string> commaList(const std::string& s) {
  std::vector<std::string> out;
  std::stringstream in(s);
  for (std::string item; std::getline(in, item, ',');)
    if (!item.empty()) out.push_back(item);
  return out;
}

struct Node {
  std::string name, parent;
  char strand = '.';
  Span extent;
  bool isGene = false;
  GeneModel parts;  // exons, cds, utrs hung on this node
  bool hasParts = false, hasChild = false;
};

}  // namespace

bool readGff3(const std::string& text, const std::string& seqid, std::vector<GeneModel>& models,
              std::vector<std::string>& seqids, std::string* why) {
  std::map<std::string, Node> nodes;
  std::vector<std::string> order;
  std::istringstream in(text);
  int number = 0;
  int anonymous = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line.rfind("##FASTA", 0) == 0) break;
    if (line.empty() || line[0] == '#' || line == "\r") continue;
    const std::vector<std::string> f = splitTabs(line);
    if (f.size() != 9) {
      *why = std::to_string(number) + ": a GFF3 line has 9 columns separated by tabs, this one " +
             std::to_string(f.size());
      return false;
    }
    int64_t start = 0, end = 0;
    if (!wholeNumber(f[3], start) || !wholeNumber(f[4], end) || start < 1 || end < start) {
      *why = std::to_string(number) + ": start and end are 1-based positions with start <= end, not '" + f[3] +
             "' and '" + f[4] + "'";
      return false;
    }
    if (std::find(seqids.begin(), seqids.end(), f[0]) == seqids.end()) seqids.push_back(f[0]);
    if (f[0] != seqid) continue;
    const Span span{start - 1, end};
    const std::string& type = f[2];
    const char strand = f[6] == "+" || f[6] == "-" ? f[6][0] : '.';
    const bool part = type == "exon" || type == "CDS" || type == "five_prime_UTR" || type == "three_prime_UTR" ||
                      type == "UTR";
    if (!part) {
      if (type != "gene" && type != "mRNA" && type != "transcript" && type != "pseudogene" &&
          type.find("RNA") == std::string::npos)
        continue;  // repeats, regions and the like draw nothing
      std::string id = attribute(f[8], "ID");
      if (id.empty()) id = "\x01" + std::to_string(++anonymous);
      Node& n = nodes[id];
      if (n.extent.end == 0) order.push_back(id);
      n.name = attribute(f[8], "Name");
      if (n.name.empty()) n.name = attribute(f[8], "gene");
      if (n.name.empty() && id[0] != '\x01') n.name = id;
      n.parent = attribute(f[8], "Parent");
      n.strand = strand;
      n.extent = span;
      n.isGene = type == "gene" || type == "pseudogene";
      continue;
    }
    for (const std::string& parent : commaList(attribute(f[8], "Parent"))) {
      Node& n = nodes[parent];
      if (n.extent.end == 0 && !n.hasParts) order.push_back(parent);
      n.hasParts = true;
      if (n.strand == '.') n.strand = strand;
      auto& list = type == "exon" ? n.parts.exons : type == "CDS" ? n.parts.cds : n.parts.utrs;
      list.push_back(span);
    }
  }
  for (auto& [id, n] : nodes)
    if (!n.parent.empty() && nodes.count(n.parent)) nodes[n.parent].hasChild = true;

  for (const std::string& id : order) {
    Node& n = nodes[id];
    // A gene is drawn through its transcripts; one without any stands alone.
    if (n.isGene && n.hasChild) continue;
    if (!n.hasParts && !n.isGene && n.extent.end == 0) continue;
    GeneModel m = n.parts;
    m.strand = n.strand;
    m.extent = n.extent;
    m.name = n.name;
    if (auto g = nodes.find(n.parent); g != nodes.end() && !g->second.name.empty()) m.name = g->second.name;
    if (m.name.empty()) m.name = id[0] == '\x01' ? "" : id;
    // Exons given without the exon lines: the CDS and UTRs are the exons.
    if (m.exons.empty()) {
      m.exons = m.cds;
      m.exons.insert(m.exons.end(), m.utrs.begin(), m.utrs.end());
    }
    complete(m);
    models.push_back(std::move(m));
  }
  return true;
}

}  // namespace trelvane::annotation::detail
