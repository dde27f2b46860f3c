// Whole designs of any size to measure on, made without chance: the same wish gives the same nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "bench/constructs.h"
#include "cdfg/graph.h"

namespace bench {

enum class Shape : std::uint8_t {
  Functions,   // many small functions
  Function,    // one function as long as the design
  Expression,  // one statement whose operations nest as deep as the design is large
  Loops,       // one nest of loops, with statements at every level
};

struct Wish {
  Shape shape = Shape::Functions;
  // At least so many nodes; a few hundred more to end what has begun.
  std::size_t nodes = 1'000'000;
  // How deep loops or operations nest at most, 0 for no limit. With a limit, an expression design
  // has as many statements as it takes.
  std::uint32_t depth = 0;
  IdPattern ids = IdPattern::Dense;
  // What is written to the calls that main makes and to those that functions make.
  const char* module_directive = "module";
  const char* call_directive = "";
};

// The shape and the ids named in lower case ("functions", "powers-of-two"), nothing for others.
std::optional<Shape> ShapeOf(std::string_view name);
std::optional<IdPattern> IdPatternOf(std::string_view name);

// The design: a root; files with functions, global tables and a structure; and a main function that
// calls the functions as modules, so that every pass has work. For the caller to free.
CdfgGraph* MakeDesign(const Wish& wish);

}  // namespace bench
