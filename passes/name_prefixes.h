// The prefixes that the command line gives the names of temporary variables; null: none given.
#pragma once

inline const char* temp_name_prefix = nullptr;
inline const char* cast_name_prefix = nullptr;
