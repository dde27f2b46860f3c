// cdfg as: a CDFG file from text. The output is only touched once the whole text has been read
// without a mistake.

#include <cstdio>
#include <memory>
#include <string>

#include "tools/commands.h"
#include "tools/files.h"
#include "tools/output.h"
#include "tools/raw_file.h"
#include "tools/text_form.h"

namespace {

struct AsOptions {
  std::string input;
  std::string output;
};

int As(const AsOptions& options) {
  std::string text;
  if (!ReadWholeFile(options.input, &text)) return kStatusFile;
  RawFile file;
  TextError error;
  if (!ParseText(text, &file, nullptr, &error)) {
    std::fputs(DescribeError(NameOfInput(options.input), text, error).c_str(), stderr);
    return kStatusUsage;
  }
  Output out;
  out.file = OpenOutput(options.output);
  if (out.file == nullptr) return kStatusFile;
  WriteRaw(file, &out);
  return CloseOutput(out.file, options.output, out.error) ? kStatusFine : kStatusFile;
}

}  // namespace

void AddAs(CLI::App* app, int* status) {
  const auto options = std::make_shared<AsOptions>();
  CLI::App* command = app->add_subcommand("as", "Makes a CDFG file from text");
  command->add_option("TEXT", options->input, "the text, as 'cdfg dis' writes it")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", options->output, "the CDFG file to write")
      ->required()
      ->type_name("FILE");
  command->footer(
      "A mistake in the text is shown with its line and column, and nothing is\n"
      "written.\n\n"
      "Example: cdfg as fir.txt -o fir.cdfg");
  command->callback([options, status] { *status = As(*options); });
}
