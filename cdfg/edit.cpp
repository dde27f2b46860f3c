#include "cdfg/edit.h"

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/kinds.h"

namespace {

// What CfgDecl_KIND holds for a variable of the C source.
constexpr std::int32_t kVariable = 257;

NodeId decl_scope = 0;

void DescribeStructure(CdfgGraph* graph, NodeId declaration, const ExprType& type) {
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, type.struct_origin);
  CdfgSetAttrNode(graph, declaration, CfgDecl_TYPEDEFLINK, type.typedef_link);
  const NodeId members = CdfgCopyTree(graph, type.struct_members);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTNODE, members);
  if (members != 0) CdfgSetPrev(graph, members, declaration);
}

void PutAtHeadOfScope(CdfgGraph* graph, NodeId declaration) {
  const NodeId old_head = CdfgGetAttr(graph, decl_scope, CfgFunc_DECLARE);
  CdfgSetNext(graph, declaration, old_head);
  if (old_head != 0) CdfgSetPrev(graph, old_head, declaration);
  CdfgSetAttrNode(graph, decl_scope, CfgFunc_DECLARE, declaration);
  CdfgSetPrev(graph, declaration, decl_scope);
}

}  // namespace

NodeId CdfgLastInChain(const CdfgGraph* graph, NodeId id) {
  NodeId last = 0;
  for (const NodeId node : NextChain(graph, id)) last = node;
  return last;
}

NodeId CdfgPrevUntilOperation(const CdfgGraph* graph, NodeId id) {
  for (const NodeId node : PrevChain(graph, id)) {
    const NodeId prev = CdfgGetPrev(graph, node);
    if (prev == 0 || CdfgGetKind(graph, prev) == DFG_MANAGE_OPERATION) return node;
  }
  return 0;
}

void CdfgLink(CdfgGraph* graph, NodeId node, NodeId next) {
  CdfgSetNext(graph, node, next);
  CdfgSetPrev(graph, next, node);
}

int CdfgAppend(CdfgGraph* graph, NodeId first, NodeId added) {
  if (first == 0 || added == 0) return -1;
  NodeId last = 0;
  for (const NodeId node : NextChain(graph, first)) {
    if (CdfgGetNext(graph, node) == node) return -1;
    last = node;
  }
  if (CdfgHasNode(graph, last) == 0) return -1;
  CdfgSetPrev(graph, added, last);
  return CdfgSetNext(graph, last, added);
}

void CdfgAttachBody(CdfgGraph* graph, NodeId parent, NodeId child) {
  if (parent == 0) return;
  const std::uint32_t attribute = CdfgBodyAttribute(CdfgGetKind(graph, parent));
  if (attribute != 0) {
    CdfgSetAttrNode(graph, parent, attribute, child);
  } else {
    CdfgSetNext(graph, parent, child);
  }
  if (child != 0) CdfgSetPrev(graph, child, parent);
}

NodeId CdfgFindByAttr1(const CdfgGraph* graph, NodeId first, std::int32_t key,
                       std::int32_t* value) {
  *value = 0;
  for (const NodeId node : NextChain(graph, first)) {
    if (CdfgGetAttrInt(graph, node, 1) != key) continue;
    *value = CdfgGetAttrInt(graph, node, 2);
    return node;
  }
  return 0;
}

void CdfgRekindChain(CdfgGraph* graph, NodeId first, std::uint32_t old_kind,
                     std::uint32_t new_kind) {
  for (const NodeId node : MemberChain(graph, first)) {
    if (CdfgGetKind(graph, node) == old_kind) CdfgSetKind(graph, node, new_kind);
  }
}

void CdfgSetDeclScope(NodeId scope) { decl_scope = scope; }

NodeId CdfgDeclareVariable(CdfgGraph* graph, NodeId position, const ExprType& type,
                           const char* name) {
  const NodeId declaration = CdfgCreateNode(graph, CFG_DECLARE, position);
  CdfgSetAttrInt(graph, declaration, CfgDecl_KIND, kVariable);
  CdfgSetAttrStr(graph, declaration, CfgDecl_NAME, name);
  CdfgSetAttrInt(graph, declaration, CfgDecl_VALTYPE, type.value_type);
  CdfgSetAttrInt(graph, declaration, CfgDecl_SIGNED, type.signedness);
  if (type.pointer_count > 0) {
    CdfgSetAttrInt(graph, declaration, CfgDecl_POINTERCNT, type.pointer_count);
  }
  if (type.value_type == DECL_VALTYPE_STRUCT) DescribeStructure(graph, declaration, type);
  if (decl_scope != 0) PutAtHeadOfScope(graph, declaration);
  return declaration;
}

char* StrToLower(char* text) {
  for (; *text != '\0'; ++text) {
    if (*text >= 'A' && *text <= 'Z') *text = static_cast<char>(*text - 'A' + 'a');
  }
  return text;
}
