// What the designs are made of. A group is the code below, with the group's number in the names;
// the shapes differ in how many groups there are and in what `top` does.
//
//   static int table[8] = {0, 37, ...};
//   int leaf(int value, int scale) {
//     int result = value * scale + 1;
//     if (result > 1000) { result = result - 1000; }
//     return result;
//   }
//   float blend(float left, float right) {
//     float mixed;
//     mixed = left * 0.5F + right / 3.0F;
//     return mixed;
//   }
//   int top(int samples[], int count) {
//     int sum = 0, index, window[8];
//     float level;
//     struct pair span;
//     <round>
//     return sum + span.high;
//   }
//
// A round:
//
//   for (index = 0; index < 8; index++) {
//     int step = index * 2;
//     window[index] = samples[index + 1] * table[index] + (sum >> 2);
//     if (window[index] > 100) sum = sum - step; else sum = sum + ((window[index] & 255) - 3);
//   }
//   again:
//   while (sum > 1000) { int step = sum / 3; sum = step; }
//   switch (sum & 3) { case 1: sum = sum + 1; break; default: sum = sum - 1; }
//   if (sum > 2000) goto again;
//   span.low = leaf(sum, 3);
//   level = blend((float)sum, 1.5F);
//   span.high = span.low + leaf(index, samples[2]);
#include "bench/design.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr std::size_t kGroupsPerFile = 100;
constexpr std::int32_t kTableLength = 8;
// What one call in main takes, and what a level of a loop nest takes besides its statements.
constexpr std::size_t kNodesPerCall = 12;
constexpr std::size_t kNodesPerLevel = 23;
constexpr std::size_t kNodesPerFiller = 9;

struct Making {
  const Wish& wish;
  Draft draft;
  Chain files;
  Chain elements;  // of the file being written
  NodeId pair;     // the structure, defined in the first file
  std::vector<NodeId> tops;
  std::size_t rounds;
};

// The variables of a group that rounds use.
struct Scope {
  NodeId table, leaf, blend, samples, sum, index, window, level, span;
};

std::string Numbered(const char* name, std::size_t number) {
  char text[64];
  std::snprintf(text, sizeof text, "%s_%zu", name, number);
  return text;
}

std::string UnitName(std::size_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "unit_%04zu.c", number);
  return text;
}

bool IsFull(const Making& making) {
  return CdfgNodeCount(making.draft.graph) + making.tops.size() * kNodesPerCall >=
         making.wish.nodes;
}

void OpenFile(Making& making, const std::string& name) {
  Draft& draft = making.draft;
  draft.file = name;
  draft.line = 1;
  draft.column = 1;
  const NodeId file = AddNode(draft, CFG_FILEINFO);
  Append(draft, making.files, file);
  CdfgSetAttrNode(draft.graph, file, CfgFileinfo_ELEMENT, 0);
  CdfgSetAttrStr(draft.graph, file, CfgFileinfo_NAME, name.c_str());
  making.elements = {file, CfgFileinfo_ELEMENT};
}

// --- The parts of a group ------------------------------------------------------------------------

NodeId AddTable(Making& making, std::size_t group) {
  Chain list = OpenDeclarations(making.draft, making.elements);
  const Type type{DECL_VALTYPE_INT, kTableLength};
  const NodeId table = Declare(making.draft, list, Numbered("table", group), type);
  InitialiseTable(making.draft, table, kTableLength);
  return table;
}

NodeId AddLeaf(Making& making, std::size_t group) {
  Draft& draft = making.draft;
  Function leaf = OpenFunction(draft, making.elements, Numbered("leaf", group), DECL_VALTYPE_INT);
  const NodeId value = Declare(draft, leaf.arguments, "value");
  const NodeId scale = Declare(draft, leaf.arguments, "scale");
  const NodeId result = Declare(draft, leaf.declarations, "result");
  Initialise(draft, result,
             Operation(CALC_Add, Operation(CALC_Mul, Variable(value), Variable(scale)), Number(1)));
  Open test = OpenIf(draft, leaf.body, Operation(CALC_Gre, Variable(result), Number(1000)));
  Chain branch = OpenBranch(draft, test, CFG_IF_THEN);
  Assign(draft, branch, Variable(result), Operation(CALC_Sub, Variable(result), Number(1000)));
  Close(draft, leaf.body, test);
  Return(draft, leaf.body, Variable(result));
  return leaf.node;
}

NodeId AddBlend(Making& making, std::size_t group) {
  Draft& draft = making.draft;
  Function blend =
      OpenFunction(draft, making.elements, Numbered("blend", group), DECL_VALTYPE_FLOAT);
  const Type real{DECL_VALTYPE_FLOAT};
  const NodeId left = Declare(draft, blend.arguments, "left", real);
  const NodeId right = Declare(draft, blend.arguments, "right", real);
  const NodeId mixed = Declare(draft, blend.declarations, "mixed", real);
  Assign(draft, blend.body, Variable(mixed),
         Operation(CALC_Add, Operation(CALC_Mul, Variable(left), Real("0.5F", 0)),
                   Operation(CALC_Div, Variable(right), Real("3.0F", 3))));
  Return(draft, blend.body, Variable(mixed));
  return blend.node;
}

// Opens the function that the group is called by.
Function OpenTop(Making& making, std::size_t group, Scope& scope) {
  Draft& draft = making.draft;
  Function top = OpenFunction(draft, making.elements, Numbered("top", group), DECL_VALTYPE_INT);
  making.tops.push_back(top.node);
  scope.samples = Declare(draft, top.arguments, "samples", {DECL_VALTYPE_INT, 0});
  Declare(draft, top.arguments, "count");
  scope.sum = Declare(draft, top.declarations, "sum");
  Initialise(draft, scope.sum, Number(0));
  scope.index = Declare(draft, top.declarations, "index");
  scope.window = Declare(draft, top.declarations, "window", {DECL_VALTYPE_INT, kTableLength});
  scope.level = Declare(draft, top.declarations, "level", {DECL_VALTYPE_FLOAT});
  scope.span = Declare(draft, top.declarations, "span", {DECL_VALTYPE_STRUCT, -1, making.pair});
  return top;
}

Scope OpenGroup(Making& making, std::size_t group) {
  Scope scope{};
  scope.table = AddTable(making, group);
  scope.leaf = AddLeaf(making, group);
  scope.blend = AddBlend(making, group);
  return scope;
}

void CloseTop(Making& making, Function& top, const Scope& scope) {
  Draft& draft = making.draft;
  Return(
      draft, top.body,
      Operation(CALC_Add, Variable(scope.sum), Member(scope.span, MemberOf(draft, scope.span, 1))));
}

// --- The parts of a round ------------------------------------------------------------------------

NodeId DeclareStep(Draft& draft, Chain& body, const Term& value) {
  Chain list = OpenDeclarations(draft, body);
  const NodeId step = Declare(draft, list, "step");
  Initialise(draft, step, value);
  return step;
}

void AddWindowTest(Draft& draft, Chain& body, const Scope& scope, NodeId step) {
  const Term element = Element(scope.window, Variable(scope.index));
  const Term sum = Variable(scope.sum);
  Open test = OpenIf(draft, body, Operation(CALC_Gre, element, Number(100)));
  Chain smaller = OpenBranch(draft, test, CFG_IF_THEN);
  Assign(draft, smaller, sum, Operation(CALC_Sub, sum, Variable(step)));
  Chain larger = OpenBranch(draft, test, CFG_IF_ELSE);
  const Term low = Operation(CALC_And, element, Number(255));
  Assign(draft, larger, sum, Operation(CALC_Add, sum, Operation(CALC_Sub, low, Number(3))));
  Close(draft, body, test);
}

void AddWindowLoop(Draft& draft, Chain& body, const Scope& scope) {
  const Term index = Variable(scope.index);
  Open loop = OpenFor(draft, body, scope.index, Number(kTableLength));
  Chain inside = OpenLoopBody(draft, loop);
  const Open block = OpenBlock(draft, inside);
  const NodeId step = DeclareStep(draft, inside, Operation(CALC_Mul, index, Number(2)));
  const Term sample = Element(scope.samples, Operation(CALC_Add, index, Number(1)));
  const Term product = Operation(CALC_Mul, sample, Element(scope.table, index));
  const Term shifted = Operation(CALC_RightShift, Variable(scope.sum), Number(2));
  Assign(draft, inside, Element(scope.window, index), Operation(CALC_Add, product, shifted));
  AddWindowTest(draft, inside, scope, step);
  Close(draft, inside, block);
  CloseFor(draft, body, loop, scope.index);
}

void AddThirds(Draft& draft, Chain& body, const Scope& scope) {
  const Term sum = Variable(scope.sum);
  Open loop = OpenWhile(draft, body, Operation(CALC_Gre, sum, Number(1000)));
  Chain inside = OpenLoopBody(draft, loop);
  const Open block = OpenBlock(draft, inside);
  const NodeId step = DeclareStep(draft, inside, Operation(CALC_Div, sum, Number(3)));
  Assign(draft, inside, sum, Variable(step));
  Close(draft, inside, block);
  Close(draft, body, loop);
}

void AddSelection(Draft& draft, Chain& body, const Scope& scope) {
  const Term sum = Variable(scope.sum);
  const Term one = Number(1);
  Open selection = OpenSwitch(draft, body, Operation(CALC_And, sum, Number(3)));
  Chain first = OpenCase(draft, selection, &one);
  Assign(draft, first, sum, Operation(CALC_Add, sum, one));
  Break(draft, first);
  Chain other = OpenCase(draft, selection, nullptr);
  Assign(draft, other, sum, Operation(CALC_Sub, sum, one));
  Close(draft, body, selection);
}

void AddJumpBack(Draft& draft, Chain& body, const Scope& scope, NodeId label) {
  Open test = OpenIf(draft, body, Operation(CALC_Gre, Variable(scope.sum), Number(2000)));
  Chain branch = OpenBranch(draft, test, CFG_IF_THEN);
  Goto(draft, branch, label);
  Close(draft, body, test);
}

void AddCalls(Making& making, Chain& body, const Scope& scope) {
  Draft& draft = making.draft;
  const char* directive = making.wish.call_directive;
  const Term low = Member(scope.span, MemberOf(draft, scope.span, 0));
  const Term high = Member(scope.span, MemberOf(draft, scope.span, 1));
  const Term sum = Variable(scope.sum);
  Assign(draft, body, low, Call(scope.leaf, {sum, Number(3)}, directive));
  Assign(draft, body, Variable(scope.level),
         Call(scope.blend, {Cast(DECL_VALTYPE_FLOAT, sum), Real("1.5F", 1)}, directive));
  const Term second = Call(scope.leaf, {Variable(scope.index), Element(scope.samples, Number(2))});
  Assign(draft, body, high, Operation(CALC_Add, low, second));
}

void AddRound(Making& making, Chain& body, const Scope& scope) {
  Draft& draft = making.draft;
  AddWindowLoop(draft, body, scope);
  const NodeId label = Label(draft, body, Numbered("again", making.rounds++));
  AddThirds(draft, body, scope);
  AddSelection(draft, body, scope);
  AddJumpBack(draft, body, scope, label);
  AddCalls(making, body, scope);
}

// --- The shapes ----------------------------------------------------------------------------------

void AddSmallFunctions(Making& making) {
  for (std::size_t group = 0; !IsFull(making); ++group) {
    if (group % kGroupsPerFile == 0 && group != 0) {
      OpenFile(making, UnitName(group / kGroupsPerFile));
    }
    Scope scope = OpenGroup(making, group);
    Function top = OpenTop(making, group, scope);
    AddRound(making, top.body, scope);
    CloseTop(making, top, scope);
  }
}

void AddLongExpression(Making& making, Function& top, const Scope& scope) {
  Draft& draft = making.draft;
  while (!IsFull(making)) {
    // An operation and one operand: a node, a reference, a port.
    const std::size_t left = (making.wish.nodes - CdfgNodeCount(draft.graph)) / 3 + 1;
    const std::size_t limit = making.wish.depth == 0 ? left : making.wish.depth;
    const NodeId edge = OpenAssignment(draft, top.body, Variable(scope.sum));
    const auto depth = static_cast<std::uint32_t>(std::min(left, limit));
    CdfgSetNext(draft.graph, edge, AddNestedOperations(draft, scope.index, depth, edge));
  }
}

struct Level {
  Open loop;
  Open block;
  Chain around;
  Chain inside;
};

Level OpenLevel(Draft& draft, const Chain& around, const Scope& scope, std::size_t fillers) {
  Level level{{}, {}, around, {}};
  level.loop = OpenFor(draft, level.around, scope.index, Number(kTableLength));
  level.inside = OpenLoopBody(draft, level.loop);
  level.block = OpenBlock(draft, level.inside);
  for (std::size_t i = 0; i < fillers; ++i) {
    Assign(draft, level.inside, Variable(scope.sum),
           Operation(CALC_Add, Variable(scope.sum), Variable(scope.index)));
  }
  return level;
}

// Closes the innermost of the levels.
void CloseLevel(Draft& draft, std::vector<Level>& levels, const Scope& scope, Chain& body) {
  Level& level = levels.back();
  Close(draft, level.inside, level.block);
  CloseFor(draft, level.around, level.loop, scope.index);
  const Chain around = level.around;
  levels.pop_back();
  (levels.empty() ? body : levels.back().inside).last = around.last;
}

void AddLoopNest(Making& making, Function& top, const Scope& scope) {
  Draft& draft = making.draft;
  const std::size_t count = CdfgNodeCount(draft.graph);
  const std::size_t left = making.wish.nodes > count ? making.wish.nodes - count : 0;
  const std::size_t deepest = left / (kNodesPerLevel + kNodesPerFiller) + 1;
  const std::size_t depth =
      making.wish.depth == 0 ? deepest : std::min<std::size_t>(deepest, making.wish.depth);
  const std::size_t per_level = left / depth;
  const std::size_t fillers = std::max<std::size_t>(
      per_level > kNodesPerLevel ? (per_level - kNodesPerLevel) / kNodesPerFiller : 0, 1);
  std::vector<Level> levels;
  while (levels.size() < depth) {
    const Chain& around = levels.empty() ? top.body : levels.back().inside;
    levels.push_back(OpenLevel(draft, around, scope, fillers));
  }
  while (!levels.empty()) CloseLevel(draft, levels, scope, top.body);
}

// One group whose top is as large as wished: by what its shape asks for, then by rounds.
void AddLargeTop(Making& making) {
  Scope scope = OpenGroup(making, 0);
  Function top = OpenTop(making, 0, scope);
  AddRound(making, top.body, scope);
  if (making.wish.shape == Shape::Expression) AddLongExpression(making, top, scope);
  if (making.wish.shape == Shape::Loops) AddLoopNest(making, top, scope);
  while (!IsFull(making)) AddRound(making, top.body, scope);
  CloseTop(making, top, scope);
}

// int main(int count, int names[]) { int samples[8], total; total = top_0(samples, 8); ... }
void AddMain(Making& making) {
  Draft& draft = making.draft;
  Function main = OpenFunction(draft, making.elements, "main", DECL_VALTYPE_INT);
  Declare(draft, main.arguments, "count");
  Declare(draft, main.arguments, "names", {DECL_VALTYPE_INT, 0});
  const NodeId samples = Declare(draft, main.declarations, "samples", {DECL_VALTYPE_INT, 8});
  const NodeId total = Declare(draft, main.declarations, "total");
  for (const NodeId top : making.tops) {
    Assign(draft, main.body, Variable(total),
           Call(top, {Variable(samples), Number(8)}, making.wish.module_directive));
  }
  Return(draft, main.body, Variable(total));
}

// Nodes made later are numbered from the last one on: with ids out of order that must be the
// highest.
void AddLastId(Making& making) {
  if (making.wish.ids == IdPattern::Dense) return;
  CdfgAddNodeWithId(making.draft.graph, kLastId);
  CdfgSetKind(making.draft.graph, kLastId, CFG_COMMENT);
}

}  // namespace

std::optional<Shape> ShapeOf(std::string_view name) {
  if (name == "functions") return Shape::Functions;
  if (name == "function") return Shape::Function;
  if (name == "expression") return Shape::Expression;
  if (name == "loops") return Shape::Loops;
  return {};
}

std::optional<IdPattern> IdPatternOf(std::string_view name) {
  if (name == "dense") return IdPattern::Dense;
  if (name == "gaps") return IdPattern::Gaps;
  if (name == "random") return IdPattern::Random;
  if (name == "descending") return IdPattern::Descending;
  if (name == "powers-of-two") return IdPattern::PowersOfTwo;
  return {};
}

CdfgGraph* MakeDesign(const Wish& wish) {
  Making making{wish, {CdfgNewGraph(), wish.ids, ""}, {}, {}, 0, {}, 0};
  const NodeId root = AddNode(making.draft, CFG_ROOT);
  making.files = {root, CfgRoot_ELEMENT};
  OpenFile(making, UnitName(0));
  making.pair = DefinePair(making.draft, making.elements);
  if (wish.shape == Shape::Functions) {
    AddSmallFunctions(making);
  } else {
    AddLargeTop(making);
  }
  OpenFile(making, "main.c");
  AddMain(making);
  AddLastId(making);
  return making.draft.graph;
}

}  // namespace bench
