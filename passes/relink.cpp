#include "passes/relink.h"

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "cdfg/walk.h"

namespace {

struct Relinking {
  CdfgGraph* graph;
  ChainWalk walk;
};

void Repoint(CdfgGraph* graph, NodeId port) {
  if (!CdfgIsPortOrConcat(CdfgGetKind(graph, port))) return;
  const NodeId declaration = CdfgGetAttr(graph, port, DfgPort_DECL);
  const DeclarationCopy* record = CdfgGetDeclarationCopy(graph, declaration);
  if (record != nullptr) CdfgSetAttrNode(graph, port, DfgPort_DECL, record->copy);
}

void RelinkPort(Relinking& run, NodeId port) {
  CdfgGraph* graph = run.graph;
  for (const NodeId member : MemberChain(graph, port)) {
    Repoint(graph, member);
    for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, member, DfgPort_DIMNODE))) {
      run.walk.Enter(CdfgGetAttr(graph, index, DfgDim_NODE));
    }
  }
}

// Relinks one node and enters what hangs below it.
void RelinkNode(Relinking& run, NodeId node) {
  CdfgGraph* graph = run.graph;
  switch (CdfgGetKind(graph, node)) {
    case DFG_OPERATION:
      run.walk.EnterOperands(node);
      break;
    case DFG_FUNC_CALL:
      for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST))) {
        run.walk.Enter(CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL));
      }
      break;
    case CFG_MEMBER_LIST:
      run.walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER));
      break;
    case CFG_MEMBER:
      run.walk.Enter(CdfgGetAttr(graph, node, CfgMember_SIGNAL));
      break;
    default:
      if (CdfgIsPortOrConcat(CdfgGetKind(graph, node))) RelinkPort(run, node);
      break;
  }
}

// The targets in front of an assignment: an edge that stands for a value is named itself, so the
// walk along next does not pass them. What owns them does not lead to the edge along next.
void RelinkTargets(Relinking& run, NodeId edge) {
  NodeId behind = edge;
  for (const NodeId node : PrevChain(run.graph, CdfgGetPrev(run.graph, edge))) {
    if (CdfgGetNext(run.graph, node) != behind) break;
    RelinkNode(run, node);
    behind = node;
  }
}

void RelinkChain(Relinking& run, NodeId first) {
  run.walk.Start(first);
  while (const NodeId node = run.walk.Next()) {
    if (CdfgGetKind(run.graph, node) == DFG_EDGE_BLOCKING) {
      RelinkTargets(run, node);
    } else {
      RelinkNode(run, node);
    }
  }
}

void RelinkOperations(Relinking& run, NodeId list) {
  for (const NodeId operation : NextChain(run.graph, list)) {
    if (CdfgGetKind(run.graph, operation) != DFG_MANAGE_OPERATION) continue;
    const NodeId root = CdfgGetAttr(run.graph, operation, DfgOpeman_OPE);
    RelinkChain(run, CdfgPrevUntilOperation(run.graph, root));
  }
}

void RelinkInitialisers(Relinking& run, NodeId declarations) {
  for (const NodeId declaration : NextChain(run.graph, declarations)) {
    if (CdfgGetKind(run.graph, declaration) != CFG_DECLARE) continue;
    RelinkChain(run, CdfgGetAttr(run.graph, declaration, CfgDecl_INIT));
  }
}

}  // namespace

void RelinkCopiedDeclarations(CdfgGraph* graph, NodeId body, NodeId declarations) {
  Relinking run{graph, ChainWalk(graph)};
  StatementWalk statements(graph, body);
  while (const NodeId statement = statements.Next()) {
    RelinkOperations(run, CdfgGetOperationList(graph, statement));
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      RelinkInitialisers(run, CdfgGetAttr(graph, statement, CfgDeclDef_DECL));
    }
  }
  RelinkInitialisers(run, declarations);
}
