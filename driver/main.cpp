// kelvo, the C elaboration step: reads a CDFG file, runs the pipeline over the graph and writes the
// result. Everything it says goes to standard output.
#include <cstdio>
#include <cstring>
#include <ctime>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "cdfg/memory.h"
#include "driver/command_line.h"
#include "driver/pipeline.h"
#include "driver/stop.h"
#include "passes/temporaries.h"

namespace {

constexpr const char* kVersion = "0.01.22";
constexpr int kFirstYear = 2004;
constexpr int kFailure = 255;

// The last component of the path that the program was started by.
const char* ProgramName(const char* path) {
  if (path == nullptr) return "kelvo";
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

void PrintBanner(const char* program) {
  std::printf("%s [C Elabration] command (Ver. %s) started...\n", program, kVersion);
  const std::time_t now = std::time(nullptr);
  std::printf("%s", std::ctime(&now));
  const int year = std::localtime(&now)->tm_year + 1900;
  std::printf("%d - %d the kelvo authors All Right Reserved.\n\n", kFirstYear, year);
}

void PrintUsage(const char* program) {
  std::printf("usage : %s <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n", program);
}

// The cast prefix of the command line is copied only where there is one already, which is never:
// cast variables keep their own names, and -p_cvar is accepted without effect. The tools behind us
// look for those names.
void ApplyPrefixes(const CommandLine& command) {
  if (command.temp_prefix != nullptr) SetTempPrefix(command.temp_prefix);
  if (GetCastPrefix() != nullptr) SetCastPrefix(command.cast_prefix);
}

void Announce(const CommandLine& command, const char* line) {
  if (command.debug != 0 && line != nullptr) std::puts(line);
}

void AnnounceFile(const CommandLine& command, const char* format, const char* path) {
  if (command.debug != 0) std::printf(format, path);
}

CdfgGraph* Read(const CommandLine& command) {
  AnnounceFile(command, "--- Reading of '%s' file ...\n", command.input_path);
  CdfgGraph* graph = CdfgReadFile(command.input_path);
  if (graph == nullptr) {
    std::printf("kelvo : Error : Cat't open '%s'\n", command.input_path);
    CdfgStop(kFailure);
  }
  StopIfMemoryIsShort(graph);
  return graph;
}

// Whether the file could be created is not looked at: the next step of the chain misses it.
void Write(const CommandLine& command, CdfgGraph* graph) {
  AnnounceFile(command, "--- Writeing of '%s' file ...\n", command.output_path);
  CdfgWriteFile(graph, command.output_path);
  StopIfMemoryIsShort(graph);
}

void Elaborate(const CommandLine& command) {
  CdfgGraph* graph = Read(command);
  for (const PipelineStep& step : Pipeline()) {
    Announce(command, step.progress);
    RunStep(step, graph);
  }
  Write(command, graph);
  Announce(command, "--- Deleteing of used memory ...");
  CdfgFreeGraph(graph);
  FreePassState();
}

}  // namespace

int main(int argument_count, char** arguments) {
  MemSetOomHandler(StopShortOfMemory);
  const char* program = ProgramName(argument_count > 0 ? arguments[0] : nullptr);
  const CommandLine command = ParseCommandLine(argument_count, arguments);
  if (command.title != 0 || command.debug != 0) PrintBanner(program);
  if (command.failed) {
    PrintUsage(program);
    return kFailure;
  }
  ApplyPrefixes(command);
  Elaborate(command);
  return 0;
}
