#include "cdfg/dump.h"

#include <bit>

#include "cdfg/graph_store.h"
#include "cdfg/names.h"

namespace {

// What stands for a string or file name that is null.
const char* Shown(const char* text) { return text == nullptr ? "(null)" : text; }

int Signed(std::uint32_t number) { return static_cast<int>(number); }

void DumpPlainValue(std::uint32_t kind, std::uint32_t attribute, std::uint32_t value,
                    std::FILE* stream) {
  char name[kCdfgNameSize];
  CdfgValueName(name, kind, attribute, value);
  if (name[0] != '\0') {
    std::fprintf(stream, "%d(%s)\n", Signed(value), name);
  } else {
    std::fprintf(stream, "%d\n", Signed(value));
  }
}

void DumpAttribute(const CdfgGraph& graph, std::uint32_t kind, const Attribute& attribute,
                   std::FILE* stream) {
  const std::uint32_t id = IdOf(graph, attribute);
  const std::uint64_t bits = BitsOf(graph, attribute);
  char name[kCdfgNameSize];
  char type_name[kCdfgNameSize];
  CdfgAttrName(name, kind, id);
  CdfgValueTypeName(type_name, attribute.type);
  std::fprintf(stream, "  AttrId/Kind/value : %d(%s)/%d(%s)/", Signed(id), name,
               Signed(attribute.type), type_name);
  switch (attribute.type) {
    case ATTR_CHAR:
      std::fprintf(stream, "%c\n", static_cast<int>(static_cast<unsigned char>(bits)));
      break;
    case ATTR_STRING:
      std::fprintf(stream, "%s\n", Shown(StringOf(graph, attribute)));
      break;
    case ATTR_FLOAT:
      std::fprintf(stream, "%e\n", std::bit_cast<double>(bits));
      break;
    case ATTR_LONGLONG:
      std::fprintf(stream, "%lld\n", static_cast<long long>(bits));
      break;
    default:
      DumpPlainValue(kind, id, static_cast<std::uint32_t>(bits), stream);
      break;
  }
}

void DumpRecord(const CdfgGraph& graph, std::size_t place, std::FILE* stream) {
  const NodeRecord& node = NodeAt(graph, place);
  const NodeRest& rest = RestAt(graph, place);
  const std::uint32_t count = AttributeCount(node);
  char name[kCdfgNameSize];
  CdfgKindName(name, node.kind);
  std::fprintf(stream, "NodeId  : %d\n", Signed(IdAt(graph, place)));
  std::fprintf(stream, "Cnst    : %d(%s)\n", Signed(node.kind), name);
  std::fprintf(stream, "PrevId  : %d\n", Signed(rest.prev));
  std::fprintf(stream, "NextId  : %d\n", Signed(node.next));
  std::fprintf(stream, "JumpId  : %d\n", Signed(rest.jump));
  std::fprintf(stream, "AttrCnt : %d\n", Signed(count));
  for (std::uint32_t i = 0; i < count; ++i) {
    DumpAttribute(graph, node.kind, AttributesOf(graph, node)[i], stream);
  }
  std::fprintf(stream, "FileInfo.FileName/Line/Column  : %s/%d/%d\n\n",
               Shown(FileNameOf(graph, rest.position)), rest.position.line, rest.position.column);
}

}  // namespace

int CdfgDumpStream(const CdfgGraph* graph, std::FILE* stream) {
  if (graph == nullptr) return -1;
  std::fputs("tavrex ver. 0.08\n\n", stream);
  for (std::size_t place = 0; place < graph->node_count; ++place) {
    if (!IsFreed(NodeAt(*graph, place))) DumpRecord(*graph, place, stream);
  }
  return 0;
}

int CdfgDumpText(const CdfgGraph* graph, const char* path) {
  if (graph == nullptr) return -1;
  std::FILE* stream = std::fopen(path, "wt");
  if (stream == nullptr) return -1;
  CdfgDumpStream(graph, stream);
  std::fclose(stream);
  return 0;
}

void CdfgDumpNode(const CdfgGraph* graph, NodeId id, std::FILE* stream) {
  const std::uint32_t place = FindPlace(graph, id);
  if (place != kNoPlace) DumpRecord(*graph, place, stream);
}
