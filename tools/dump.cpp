// cdfg dump: the graph store's debug listing of a file, node by node.

#include "cdfg/dump.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "tools/commands.h"
#include "tools/files.h"

namespace {

struct DumpOptions {
  std::string input;
  std::string output = "-";
};

bool IsDirectory(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The store takes a directory for an empty file; whoever names one here has made a mistake.
CdfgGraph* ReadGraph(const std::string& input) {
  if (IsDirectory(input)) {
    ReportFile("read", input, EISDIR);
    return nullptr;
  }
  CdfgGraph* graph = input == "-" ? CdfgReadStream(stdin) : CdfgReadFile(input.c_str());
  if (graph == nullptr) ReportFile("read", NameOfInput(input), errno);
  return graph;
}

int Dump(const DumpOptions& options) {
  CdfgGraph* graph = ReadGraph(options.input);
  if (graph == nullptr) return kStatusFile;
  int status = kStatusFile;
  std::FILE* file = OpenOutput(options.output);
  if (file != nullptr) {
    CdfgDumpStream(graph, file);
    const int error = std::ferror(file) != 0 ? errno : 0;
    if (CloseOutput(file, options.output, error)) status = kStatusFine;
  }
  CdfgFreeGraph(graph);
  return status;
}

}  // namespace

void AddDump(CLI::App* app, int* status) {
  const auto options = std::make_shared<DumpOptions>();
  CLI::App* command = app->add_subcommand("dump", "Lists a CDFG file node by node");
  command->add_option("FILE", options->input, "the CDFG file")->required()->type_name("");
  command->add_option("-o,--output", options->output, "where to write (default: standard output)")
      ->type_name("FILE");
  command->footer(
      "Every node with its links, attributes and position, as the program holds them\n"
      "after reading the file.\n\n"
      "Example: cdfg dump fir.cdfg | less");
  command->callback([options, status] { *status = Dump(*options); });
}
