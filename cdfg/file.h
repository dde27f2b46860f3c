// The binary CDFG file: the node list of a graph, record after record, big-endian, without header.
//
//   offset  size  field of a node record
//        0     4  id
//        4     4  kind
//        8     4  prev
//       12     4  next
//       16     4  jump
//       20     4  number of attribute records that follow (signed)
//       24     -  attribute records
//        -   2+n  file name: byte count, bytes; count 0 when the node has none
//        -     4  line (signed)
//        -     4  column (signed)
//
//   offset  size  field of an attribute record
//        0     4  attribute id
//        4     4  value type
//        8     -  value: ATTR_CHAR 1 byte; ATTR_INT, ATTR_NODE 4; ATTR_LONGLONG, ATTR_FLOAT 8;
//                 ATTR_STRING 2+n like a file name; any other type: no byte
#pragma once

#include <cstdio>

#include "cdfg/graph.h"

// Reads the file at `path` into a new graph; null when it cannot be opened, or without memory for
// reading, which is said in one line. A file cut short gives what stands in front of the cut; an
// attribute of an unknown value type is left out; of two attributes with one id in a node the
// second overwrites the first in place. A string ends at its first zero byte.
CdfgGraph* CdfgReadFile(const char* path);
// The same from an open stream, which is left open.
CdfgGraph* CdfgReadStream(std::FILE* stream);

// Writes the graph to `path`, replacing what is there: 0, or -1 when the graph is null or the file
// cannot be created. The count of a string is the low 16 bits of its length while all its bytes are
// written, so one of 65536 bytes or more makes the file unreadable: kept.
int CdfgWriteFile(CdfgGraph* graph, const char* path);
// The same to an open stream, which is left open.
int CdfgWriteStream(CdfgGraph* graph, std::FILE* stream);
