#include "tests/driver/module_design.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "tests/support/graphs.h"

namespace {

constexpr std::int32_t kInt = 4;
constexpr const char* kFile = "design.c";

// Makes the nodes of a design, each with a place in the source.
class Maker {
 public:
  explicit Maker(CdfgGraph* graph) : graph_(graph) {}

  NodeId Node(std::uint32_t kind) {
    const NodeId node = CdfgAddNode(graph_, kind);
    CdfgSetFileName(graph_, node, kFile);
    CdfgSetLine(graph_, node, 1);
    CdfgSetColumn(graph_, node, static_cast<std::int32_t>(node));
    return node;
  }
  // Makes the chain of these nodes what an attribute of `owner` names.
  void Own(NodeId owner, std::uint32_t attribute, std::initializer_list<NodeId> chain) {
    NodeId before = owner;
    for (const NodeId node : chain) {
      if (before == owner) {
        CdfgSetAttrNode(graph_, owner, attribute, node);
      } else {
        CdfgSetNext(graph_, before, node);
      }
      CdfgSetPrev(graph_, node, before);
      before = node;
    }
  }
  NodeId Declaration(const char* name) {
    const NodeId node = Node(CFG_DECLARE);
    CdfgSetAttrInt(graph_, node, CfgDecl_KIND, 257);
    CdfgSetAttrStr(graph_, node, CfgDecl_NAME, name);
    CdfgSetAttrInt(graph_, node, CfgDecl_SIGNED, 1);
    CdfgSetAttrInt(graph_, node, CfgDecl_VALTYPE, kInt);
    return node;
  }
  NodeId Function(const char* name) {
    const NodeId node = Node(CFG_FUNCTION);
    CdfgSetAttrStr(graph_, node, CfgFunc_NAME, name);
    CdfgSetAttrInt(graph_, node, CfgFunc_SIGNED, 1);
    CdfgSetAttrInt(graph_, node, CfgFunc_RETTYPE, kInt);
    return node;
  }
  // A reference edge with a variable or a constant behind it.
  NodeId Read(NodeId declaration) { return Reference(Port(DFG_INPUT_VAR, declaration)); }
  // A reference edge with a cast of a variable to char behind it.
  NodeId ReadAsChar(NodeId declaration) {
    const NodeId cast = Node(DFG_SPEC);
    CdfgSetAttrInt(graph_, cast, DfgSpec_SIGNED, 1);
    CdfgSetAttrInt(graph_, cast, DfgSpec_VALTYPE, DECL_VALTYPE_CHAR);
    const NodeId value = Read(declaration);
    CdfgSetNext(graph_, cast, value);
    CdfgSetPrev(graph_, value, cast);
    return Reference(cast);
  }
  NodeId Constant(const char* text, std::int32_t value) {
    const NodeId node = Node(DFG_INPUT_CONST);
    CdfgSetAttrStr(graph_, node, DfgInputCnst_STRVALUE, text);
    CdfgSetAttrInt(graph_, node, DfgInputCnst_INTVALUE, value);
    CdfgSetAttrInt(graph_, node, DfgInputCnst_BASE, 10);
    return Reference(node);
  }
  NodeId Operation(std::int32_t type, NodeId left, NodeId right) {
    const NodeId node = Node(DFG_OPERATION);
    CdfgSetAttrInt(graph_, node, DfgOpe_TYPE, type);
    Own(node, DfgOpe_LEFT, {left});
    Own(node, DfgOpe_RIGHT, {right});
    return node;
  }
  NodeId Call(NodeId function, NodeId first, NodeId second) {
    const NodeId node = Node(DFG_FUNC_CALL);
    CdfgSetJump(graph_, node, function);
    CdfgSetAttrStr(graph_, node, DfgFuncCall_NAME, CdfgGetAttrStr(graph_, function, CfgFunc_NAME));
    Own(node, DfgFuncCall_ARGLIST, {Argument(first), Argument(second)});
    CdfgSetAttrInt(graph_, node, DfgFuncCall_FUNC_SIGNED, 1);
    CdfgSetAttrInt(graph_, node, DfgFuncCall_FUNC_RETTYPE, kInt);
    return node;
  }
  // A statement's operation with this expression.
  NodeId Evaluate(NodeId expression) {
    const NodeId node = Node(DFG_MANAGE_OPERATION);
    Own(node, DfgOpeman_OPE, {expression});
    return node;
  }
  NodeId Assign(NodeId declaration, NodeId value) {
    const NodeId node = Node(DFG_MANAGE_OPERATION);
    const NodeId target = Port(DFG_OUTPUT_VAR, declaration);
    const NodeId edge = Node(DFG_EDGE_BLOCKING);
    CdfgSetNext(graph_, target, edge);
    CdfgSetPrev(graph_, edge, target);
    CdfgSetNext(graph_, edge, value);
    CdfgSetPrev(graph_, value, edge);
    CdfgSetAttrNode(graph_, node, DfgOpeman_OPE, edge);
    return node;
  }
  // A node of `kind` that owns one other by `attribute`.
  NodeId Holder(std::uint32_t kind, std::uint32_t attribute, NodeId owned) {
    const NodeId node = Node(kind);
    Own(node, attribute, {owned});
    return node;
  }
  NodeId Directive(const char* text) {
    const NodeId node = Node(INFO_DIRECTIVE);
    CdfgSetAttrInt(graph_, node, DfgDirective_TYPE, 55);
    CdfgSetAttrStr(graph_, node, DfgDirective_STR, text);
    return node;
  }

 private:
  NodeId Port(std::uint32_t kind, NodeId declaration) {
    const NodeId node = Node(kind);
    CdfgSetAttrStr(graph_, node, DfgPort_NAME, CdfgGetAttrStr(graph_, declaration, CfgDecl_NAME));
    CdfgSetAttrNode(graph_, node, DfgPort_DECL, declaration);
    return node;
  }
  NodeId Reference(NodeId operand) {
    const NodeId edge = Node(DFG_EDGE_PRESEDE);
    CdfgSetNext(graph_, edge, operand);
    CdfgSetPrev(graph_, operand, edge);
    return edge;
  }
  NodeId Argument(NodeId value) { return Holder(DFG_PORT_INFO, DfgPortInfo_SIGNAL, value); }

  CdfgGraph* graph_;
};

NodeId MakeSub(Maker& make) {
  const NodeId function = make.Function("sub");
  const NodeId b = make.Declaration("b");
  const NodeId c = make.Declaration("c");
  make.Own(function, CfgFunc_ARGLIST, {b, c});
  const NodeId sum = make.Operation(CALC_Add, make.Read(b), make.Read(c));
  make.Own(function, CfgFunc_STARTCFG,
           {make.Holder(CFG_RETURN, CfgReturn_EXP, make.Evaluate(sum))});
  return function;
}

NodeId MakeTop(Maker& make, CdfgGraph* graph, NodeId sub) {
  const NodeId function = make.Function("top");
  const NodeId a = make.Declaration("a");
  const NodeId b = make.Declaration("b");
  const NodeId x = make.Declaration("x");
  make.Own(function, CfgFunc_ARGLIST, {a, b});
  make.Own(function, CfgFunc_DECLARE, {x});
  const NodeId divisor =
      make.Operation(CALC_Add, make.ReadAsChar(b), make.Call(sub, make.Read(a), make.Read(b)));
  const NodeId body = make.Holder(CFG_STATE_DATAPATH, CfgDatapath_OPELIST,
                                  make.Assign(x, make.Operation(CALC_Div, make.Read(a), divisor)));
  const NodeId loop = make.Node(CFG_LOOP_BEGIN);
  const NodeId loop_end = make.Node(CFG_LOOP_END);
  CdfgSetAttrInt(graph, loop, CfgLoopBegin_LOOPTYPE, LOOP_WHILE);
  CdfgSetJump(graph, loop, loop_end);
  CdfgSetJump(graph, loop_end, loop);
  make.Own(loop, CfgLoopBegin_CFG,
           {make.Holder(CFG_LOOP_COND, CfgLoopCond_CONDOPE, make.Evaluate(make.Read(a))),
            make.Holder(CFG_LOOP_STAT, CfgLoopStat_CFG, body)});
  make.Own(function, CfgFunc_STARTCFG,
           {loop, loop_end, make.Holder(CFG_RETURN, CfgReturn_EXP, make.Evaluate(make.Read(x)))});
  return function;
}

NodeId MakeDeepTop(Maker& make, int depth) {
  const NodeId function = make.Function("top");
  const NodeId a = make.Declaration("a");
  const NodeId b = make.Declaration("b");
  make.Own(function, CfgFunc_ARGLIST, {a, b});
  NodeId sum = make.Read(a);
  for (int i = 0; i < depth; ++i) sum = make.Operation(CALC_Add, sum, make.Read(b));
  make.Own(function, CfgFunc_STARTCFG,
           {make.Holder(CFG_STATE_DATAPATH, CfgDatapath_OPELIST, make.Assign(a, sum))});
  return function;
}

NodeId MakeMain(Maker& make, NodeId top, const char* directive) {
  const NodeId function = make.Function("main");
  const NodeId call = make.Call(top, make.Constant("1", 1), make.Constant("2", 2));
  make.Own(call, DfgFuncCall_DIRECTIVE, {make.Directive(directive)});
  make.Own(function, CfgFunc_STARTCFG,
           {make.Holder(CFG_STATE_DATAPATH, CfgDatapath_OPELIST, make.Evaluate(call))});
  return function;
}

// Makes the root and the file, and answers the file.
NodeId MakeFile(Maker& make, CdfgGraph* graph) {
  const NodeId root = make.Node(CFG_ROOT);
  const NodeId file = make.Node(CFG_FILEINFO);
  CdfgSetAttrStr(graph, file, CfgFileinfo_NAME, kFile);
  make.Own(root, CfgRoot_ELEMENT, {file});
  return file;
}

}  // namespace

void WriteModuleDesign(const std::string& path) {
  const support::OwnedGraph graph(CdfgNewGraph());
  Maker make(graph.get());
  const NodeId file = MakeFile(make, graph.get());
  const NodeId sub = MakeSub(make);
  const NodeId top = MakeTop(make, graph.get(), sub);
  make.Own(file, CfgFileinfo_ELEMENT, {sub, top, MakeMain(make, top, "module prefix=p")});
  ASSERT_EQ(CdfgWriteFile(graph.get(), path.c_str()), 0);
}

void WriteDeepDesign(const std::string& path, int depth) {
  const support::OwnedGraph graph(CdfgNewGraph());
  Maker make(graph.get());
  const NodeId file = MakeFile(make, graph.get());
  const NodeId top = MakeDeepTop(make, depth);
  make.Own(file, CfgFileinfo_ELEMENT, {top, MakeMain(make, top, "module")});
  ASSERT_EQ(CdfgWriteFile(graph.get(), path.c_str()), 0);
}
