// The set of names already used in the design, from which passes learn whether a new name is free.
//
// Program-wide: filled by the name table pass, grown by every pass that invents a name, released at
// the end of the run. Every call but NameSetInit and NameSetFree needs a set; without one,
// NameSetContains answers 0 and NameSetAdd does nothing and answers -1.
#pragma once

#include <string>

// Releases an existing set and makes an empty one. Answers 0.
int NameSetInit();
// Adds a copy of `name`; it may be there already. Answers 0.
int NameSetAdd(const char* name);
// 1 when a name equal to `name`, case included, is in the set, else 0.
int NameSetContains(const char* name);
// Releases the set with all its names.
void NameSetFree();

// The bucket of a name, 0 to 255: the sum of its bytes, each taken as a signed 8-bit number,
// reduced to the lowest 8 bits. For whoever compares with tools that lay names out in buckets; this
// set is one table.
unsigned NameSetBucket(const char* name);

// A name that is not in the set yet, and is from now on: `prefix` followed by *counter in decimal
// with at least `digits` digits. The counter goes up by one for every name tried. The name stays
// valid until the next call.
const std::string& NameSetFresh(const char* prefix, int digits, int* counter);
