// Re-points the references of a copied function to its copied declarations.
#pragma once

#include "cdfg/graph.h"

// `body` and `declarations` are the CfgFunc_STARTCFG and CfgFunc_DECLARE of a function just copied
// with the remap switch on (cdfg/copy.h). Every port in its statements, expressions, argument lists
// and initialisers whose declaration was copied gets the copy as its DfgPort_DECL. The table of
// copies is only read; the caller clears it.
void RelinkCopiedDeclarations(CdfgGraph* graph, NodeId body, NodeId declarations);
