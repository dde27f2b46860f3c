// make_design: writes a design of a given size and shape as a CDFG file.
//
//   make_design FILE [nodes=1000000] [shape=functions|function|expression|loops] [depth=N]
//               [ids=dense|gaps|random|descending|powers-of-two] [prefix=NAME] [roll=yes]
//
// With prefix, main calls the functions as modules with that prefix; with roll, the functions call
// each other as rolled. Prints how many nodes the design has.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/design.h"
#include "cdfg/file.h"

namespace {

struct Command {
  const char* path = nullptr;
  std::string module_directive = "module";
  bench::Wish wish;
};

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// False for a setting that is not known.
bool Apply(Command& command, std::string_view name, std::string_view value) {
  bench::Wish& wish = command.wish;
  const std::string text(value);
  if (name == "nodes" && IsNumber(value)) {
    wish.nodes = std::strtoull(text.c_str(), nullptr, 10);
  } else if (name == "depth" && IsNumber(value)) {
    wish.depth = static_cast<std::uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
  } else if (name == "shape" && bench::ShapeOf(value)) {
    wish.shape = *bench::ShapeOf(value);
  } else if (name == "ids" && bench::IdPatternOf(value)) {
    wish.ids = *bench::IdPatternOf(value);
  } else if (name == "prefix" && !value.empty()) {
    command.module_directive += " prefix=" + text;
  } else if (name == "roll" && value == "yes") {
    wish.call_directive = "roll";
  } else {
    return false;
  }
  return true;
}

bool Parse(Command& command, int count, char** arguments) {
  if (count < 2) return false;
  command.path = arguments[1];
  for (int i = 2; i < count; ++i) {
    const std::string_view argument = arguments[i];
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos) return false;
    if (!Apply(command, argument.substr(0, equals), argument.substr(equals + 1))) return false;
  }
  command.wish.module_directive = command.module_directive.c_str();
  return true;
}

}  // namespace

int main(int argument_count, char** arguments) {
  Command command;
  if (!Parse(command, argument_count, arguments)) {
    std::puts(
        "usage: make_design FILE [nodes=N] [shape=functions|function|expression|loops] [depth=N]\n"
        "                   [ids=dense|gaps|random|descending|powers-of-two] [prefix=NAME]\n"
        "                   [roll=yes]");
    return 2;
  }
  CdfgGraph* graph = bench::MakeDesign(command.wish);
  const std::size_t nodes = CdfgNodeCount(graph);
  const bool written = CdfgMemoryIsShort(graph) == 0 && CdfgWriteFile(graph, command.path) == 0;
  CdfgFreeGraph(graph);
  if (!written) {
    std::printf("make_design: cannot write '%s'\n", command.path);
    return 1;
  }
  std::printf("%zu nodes\n", nodes);
  return 0;
}
