// Whole files for the commands: "-" is standard input or output. A failure prints one line on
// standard error, "cdfg: cannot read FILE: why".
#pragma once

#include <cstdio>
#include <string>

inline constexpr int kStatusFine = 0;
inline constexpr int kStatusFile = 1;   // a file cannot be read or written
inline constexpr int kStatusUsage = 2;  // the command line or a text has a mistake

// How messages call a path.
std::string NameOfInput(const std::string& path);

bool ReadWholeFile(const std::string& path, std::string* bytes);

// Makes or truncates the file; null when that fails.
std::FILE* OpenOutput(const std::string& path);
// Closes it and answers whether everything was written; `error` is the errno of earlier trouble.
bool CloseOutput(std::FILE* file, const std::string& path, int error);

// Prints that line; `error` is an errno.
void ReportFile(const char* verb, const std::string& name, int error);
