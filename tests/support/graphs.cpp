#include "tests/support/graphs.h"

#include <iterator>
#include <sstream>

namespace support {
namespace {

std::string Value(const CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::uint32_t type) {
  std::ostringstream text;
  switch (type) {
    case ATTR_CHAR:
      text << '=' << static_cast<int>(CdfgGetAttrChar(graph, id, attribute)) << 'c';
      break;
    case ATTR_INT:
      text << '=' << CdfgGetAttrInt(graph, id, attribute);
      break;
    case ATTR_LONGLONG:
      text << '=' << CdfgGetAttrInt64(graph, id, attribute) << 'L';
      break;
    case ATTR_FLOAT:
      text << '=' << CdfgGetAttrDouble(graph, id, attribute) << 'd';
      break;
    case ATTR_STRING:
      if (const char* string = CdfgGetAttrStr(graph, id, attribute)) {
        text << "=\"" << string << '"';
      } else {
        text << "=null";
      }
      break;
    case ATTR_NODE:
      text << "->" << CdfgGetAttr(graph, id, attribute);
      break;
    default:
      text << "=?" << type;
      break;
  }
  return text.str();
}

// Words with a blank between them.
class Words {
 public:
  void Add(const std::string& word) {
    if (!text_.empty()) text_ += ' ';
    text_ += word;
  }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

}  // namespace

void GraphTest::Chain(std::initializer_list<NodeId> nodes) {
  for (const NodeId* node = nodes.begin(); std::next(node) != nodes.end(); ++node) {
    CdfgSetNext(graph, node[0], node[1]);
    CdfgSetPrev(graph, node[1], node[0]);
  }
}

void GraphTest::Own(NodeId parent, std::uint32_t attribute, NodeId child) {
  CdfgSetAttrNode(graph, parent, attribute, child);
  CdfgSetPrev(graph, child, parent);
}

void GraphTest::Place(NodeId node, const char* file, std::int32_t line, std::int32_t column) {
  CdfgSetFileName(graph, node, file);
  CdfgSetLine(graph, node, line);
  CdfgSetColumn(graph, node, column);
}

std::string Attributes(const CdfgGraph* graph, NodeId id) {
  Words words;
  for (std::int32_t place = 1; place <= CdfgGetAttrCount(graph, id); ++place) {
    const std::uint32_t attribute = CdfgGetAttrIdAt(graph, id, place);
    words.Add(std::to_string(attribute) +
              Value(graph, id, attribute, CdfgGetAttrTypeAt(graph, id, place)));
  }
  return words.Take();
}

std::string NextIds(const CdfgGraph* graph, NodeId first) {
  Words words;
  int left = 1000;
  for (NodeId node = first; node != 0 && left > 0; node = CdfgGetNext(graph, node), --left) {
    words.Add(std::to_string(node));
  }
  return words.Take();
}

std::string KindsFrom(const CdfgGraph* graph, NodeId first) {
  Words words;
  for (NodeId id = first; CdfgHasNode(graph, id) != 0; ++id) {
    words.Add(std::to_string(CdfgGetKind(graph, id)));
  }
  return words.Take();
}

std::string Position(const CdfgGraph* graph, NodeId id) {
  const char* file = CdfgGetFileName(graph, id);
  return std::string(file == nullptr ? "-" : file) + ":" + std::to_string(CdfgGetLine(graph, id)) +
         ":" + std::to_string(CdfgGetColumn(graph, id));
}

}  // namespace support
