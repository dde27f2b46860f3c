// cdfg dis: a CDFG file as text.

#include <cstdio>
#include <memory>
#include <string>

#include "tools/commands.h"
#include "tools/files.h"
#include "tools/output.h"
#include "tools/raw_file.h"
#include "tools/text_form.h"

namespace {

struct DisOptions {
  std::string input;
  std::string output = "-";
  bool flat = false;
};

int Dis(const DisOptions& options) {
  std::string bytes;
  if (!ReadWholeFile(options.input, &bytes)) return kStatusFile;
  const RawFile file = ParseRaw(bytes);
  Output out;
  out.file = OpenOutput(options.output);
  if (out.file == nullptr) return kStatusFile;
  TextStyle style;
  style.flat = options.flat;
  PrintText(file, style, &out);
  return CloseOutput(out.file, options.output, out.error) ? kStatusFine : kStatusFile;
}

}  // namespace

void AddDis(CLI::App* app, int* status) {
  const auto options = std::make_shared<DisOptions>();
  CLI::App* command = app->add_subcommand("dis", "Turns a CDFG file into text");
  command->add_option("FILE", options->input, "the CDFG file")->required()->type_name("");
  command->add_option("-o,--output", options->output, "where to write (default: standard output)")
      ->type_name("FILE");
  command->add_flag("--flat", options->flat, "one node a line in file order, nothing nested");
  command->footer(
      "The text shows the graph as a tree. Nothing is lost: 'cdfg as' makes the same\n"
      "bytes from it, whatever the file held.\n\n"
      "Example: cdfg dis fir.cdfg -o fir.txt");
  command->callback([options, status] { *status = Dis(*options); });
}
