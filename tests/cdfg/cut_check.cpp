// Reads every beginning of CDFG files: cut_check FILE...
//
// For each file and each number of bytes from none to all, the reader gets just that many bytes,
// and what it makes of them is held against what a plain reading of the format says stands there:
// how many nodes there are, everything in the last two of them, and at every node boundary
// everything in all of them. Prints a line for each file and a closing count.
//
// The work grows with the square of a file's size: 100 KB take some seconds, 600 KB minutes.
#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "tests/support/files.h"

namespace {

// --- What the format says ------------------------------------------------------------------------

struct PlainAttribute {
  std::uint32_t id = 0;
  std::uint32_t type = 0;
  std::uint64_t value = 0;
  std::string text;
  std::size_t end = 0;  // the value is there when so many bytes are
};

struct Plain {
  std::size_t head_end = 0;  // the node is there when so many bytes are
  std::uint32_t words[5] = {};
  std::vector<PlainAttribute> attributes;
  std::string file;
  std::int32_t line = 0;
  std::int32_t column = 0;
  std::size_t end = 0;  // and so is its position
};

struct Bytes {
  const std::string& all;
  std::size_t at = 0;

  std::uint64_t Number(int size) {
    std::uint64_t value = 0;
    while (size-- > 0) value = value << 8 | static_cast<unsigned char>(all.at(at++));
    return value;
  }
  std::uint32_t Word() { return static_cast<std::uint32_t>(Number(4)); }
  std::string Text() {
    const std::size_t size = Number(2);
    const std::string text = all.substr(at, size);
    at += size;
    return text;
  }
};

PlainAttribute NextAttribute(Bytes& bytes) {
  constexpr int kSizes[] = {0, 1, 4, 8, 8, 0, 4};
  PlainAttribute attribute;
  attribute.id = bytes.Word();
  attribute.type = bytes.Word();
  if (attribute.type == ATTR_STRING) {
    attribute.text = bytes.Text();
  } else if (attribute.type <= ATTR_NODE) {
    attribute.value = bytes.Number(kSizes[attribute.type]);
  }
  attribute.end = bytes.at;
  return attribute;
}

// The nodes of a whole file in which no node repeats an attribute and no value type is unknown.
std::vector<Plain> ReadPlain(const std::string& content) {
  std::vector<Plain> nodes;
  Bytes bytes{content};
  while (bytes.at < content.size()) {
    Plain node;
    for (std::uint32_t& word : node.words) word = bytes.Word();
    node.head_end = bytes.at;
    const std::uint32_t count = bytes.Word();
    for (std::uint32_t i = 0; i < count; ++i) node.attributes.push_back(NextAttribute(bytes));
    node.file = bytes.Text();
    node.line = static_cast<std::int32_t>(bytes.Word());
    node.column = static_cast<std::int32_t>(bytes.Word());
    node.end = bytes.at;
    nodes.push_back(std::move(node));
  }
  return nodes;
}

// --- Comparing -----------------------------------------------------------------------------------

bool SameAttribute(const CdfgGraph* graph, NodeId id, std::int32_t place,
                   const PlainAttribute& plain) {
  const std::uint32_t attribute = plain.id;
  if (CdfgGetAttrIdAt(graph, id, place) != attribute) return false;
  if (CdfgGetAttrTypeAt(graph, id, place) != plain.type) return false;
  switch (plain.type) {
    case ATTR_CHAR:
      return CdfgGetAttrChar(graph, id, attribute) == static_cast<std::int8_t>(plain.value);
    case ATTR_STRING: {
      const char* text = CdfgGetAttrStr(graph, id, attribute);
      return text != nullptr && plain.text == text;
    }
    case ATTR_LONGLONG:
    case ATTR_FLOAT:
      return CdfgGetAttrInt64(graph, id, attribute) == static_cast<std::int64_t>(plain.value);
    default:
      return CdfgGetAttr(graph, id, attribute) == static_cast<NodeId>(plain.value);
  }
}

bool SamePosition(const CdfgGraph* graph, NodeId id, const Plain& plain, bool is_there) {
  const char* name = CdfgGetFileName(graph, id);
  const std::string file = is_there ? plain.file : "";
  if (std::string(name == nullptr ? "" : name) != file) return false;
  return CdfgGetLine(graph, id) == (is_there ? plain.line : 0) &&
         CdfgGetColumn(graph, id) == (is_there ? plain.column : 0);
}

// Whether the node at a place is what the first `size` bytes hold of it.
bool SameNode(const CdfgGraph* graph, std::size_t place, const Plain& plain, std::size_t size) {
  const NodeId id = CdfgNodeIdAt(graph, place);
  if (id != plain.words[0] || CdfgGetKind(graph, id) != plain.words[1] ||
      CdfgGetPrev(graph, id) != plain.words[2] || CdfgGetNext(graph, id) != plain.words[3] ||
      CdfgGetJump(graph, id) != plain.words[4]) {
    return false;
  }
  std::int32_t count = 0;
  for (const PlainAttribute& attribute : plain.attributes) {
    if (attribute.end > size) break;
    if (!SameAttribute(graph, id, ++count, attribute)) return false;
  }
  return CdfgGetAttrCount(graph, id) == count && SamePosition(graph, id, plain, plain.end <= size);
}

// --- Cutting -------------------------------------------------------------------------------------

CdfgGraph* ReadBeginning(std::string& content, std::size_t size) {
  // A stream of no bytes at all cannot be made of memory.
  std::FILE* stream = size == 0 ? std::fopen("/dev/null", "rb") : fmemopen(&content[0], size, "rb");
  CdfgGraph* graph = CdfgReadStream(stream);
  std::fclose(stream);
  return graph;
}

// `count` nodes have begun within the first `size` bytes.
bool IsRight(std::string& content, const std::vector<Plain>& nodes, std::size_t count,
             std::size_t size) {
  CdfgGraph* graph = ReadBeginning(content, size);
  bool is_right = CdfgNodeCount(graph) == count;
  const bool is_boundary = count != 0 && nodes[count - 1].end == size;
  const std::size_t from = is_boundary || count < 2 ? 0 : count - 2;
  for (std::size_t i = from; is_right && i < count; ++i) {
    is_right = SameNode(graph, i, nodes[i], size);
  }
  CdfgFreeGraph(graph);
  return is_right;
}

// How many beginnings of the file are read wrongly.
std::size_t CountWrong(std::string& content) {
  const std::vector<Plain> nodes = ReadPlain(content);
  std::size_t wrong = 0;
  std::size_t count = 0;
  for (std::size_t size = 0; size <= content.size(); ++size) {
    while (count < nodes.size() && nodes[count].head_end <= size) ++count;
    if (IsRight(content, nodes, count, size)) continue;
    if (++wrong == 1) std::printf("the first %zu bytes are read wrongly\n", size);
  }
  return wrong;
}

}  // namespace

int main(int argument_count, char** arguments) {
  // The reader's buffer stays with the program instead of being mapped anew for each reading.
  mallopt(M_MMAP_THRESHOLD, 64 * 1024 * 1024);
  mallopt(M_TRIM_THRESHOLD, 64 * 1024 * 1024);
  std::size_t failed = 0;
  for (int i = 1; i < argument_count; ++i) {
    std::string content = support::ReadFile(arguments[i]);
    const std::size_t wrong = CountWrong(content);
    std::printf("%s: %zu beginnings, %zu wrong\n", arguments[i], content.size() + 1, wrong);
    std::fflush(stdout);
    if (wrong != 0) ++failed;
  }
  std::printf("%zu passed, %zu failed\n", static_cast<std::size_t>(argument_count) - 1 - failed,
              failed);
  return failed == 0 && argument_count > 1 ? 0 : 1;
}
