#include "tests/passes/runner/run_case.h"

#include <set>
#include <string_view>

#include "cdfg/file.h"
#include "driver/command_line.h"
#include "passes/temporaries.h"
#include "tests/passes/runner/diff.h"
#include "tests/passes/runner/shape.h"
#include "tests/passes/runner/state.h"
#include "tests/support/files.h"
#include "tests/support/stop.h"
#include "tools/text_tokens.h"

namespace {

// --- Running -------------------------------------------------------------------------------------

// Sets what the words of a command line set. False when one of them is no option.
bool ApplyOptions(PassCase* parsed) {
  std::string paths[] = {"case", "in", "info", "out"};
  std::vector<char*> arguments = {paths[0].data()};
  for (std::string& option : parsed->options) arguments.push_back(option.data());
  for (std::string* path : {&paths[1], &paths[2], &paths[3]}) arguments.push_back(path->data());
  const CommandLine command =
      ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
  if (command.temp_prefix != nullptr) SetTempPrefix(command.temp_prefix);
  return !command.failed && command.input_path == paths[1].data();
}

void RunSteps(const PassCase& parsed, CdfgGraph* graph, Outcome* outcome) {
  const std::span<const PipelineStep* const> steps = parsed.steps;
  for (std::size_t done = 0;; ++done) {
    if (!parsed.is_damaged && outcome->shape_problems.empty()) {
      const ShapeRules rules = parsed.is_loose ? ShapeRules::Loose : ShapeRules::All;
      outcome->shape_problems = FindShapeProblems(graph, steps.subspan(0, done), rules);
    }
    if (parsed.is_loose && !outcome->is_loose) {
      outcome->is_loose = !FindShapeProblems(graph, steps.subspan(0, done)).empty();
    }
    if (done == steps.size()) return;
    RunStep(*steps[done], graph);
  }
}

CdfgGraph* ReadGraph(const std::string& bytes) {
  const support::Stream stream(std::tmpfile());
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
  std::rewind(stream.get());
  return CdfgReadStream(stream.get());
}

std::string WriteGraph(CdfgGraph* graph) {
  const support::Stream stream(std::tmpfile());
  CdfgWriteStream(graph, stream.get());
  return support::ReadStream(stream.get());
}

Outcome RunGraph(const CaseRun& run, CdfgGraph* graph) {
  Outcome outcome;
  std::set<std::string> strings;
  CollectStrings(graph, &strings);
  const support::Outcome ended = support::RunCatchingStop([&] {
    RunSteps(run.parsed, graph, &outcome);
    outcome.after = WriteGraph(graph);
  });
  outcome.status = ended.status.value_or(0);
  outcome.output = ended.output;
  CollectStrings(graph, &strings);
  outcome.state = DescribeState(graph, run.names, strings);
  return outcome;
}

// --- Comparing -----------------------------------------------------------------------------------

// Whether `actual` is `expected`, where <id> in the latter stands for any number.
bool MatchesOutput(std::string_view expected, std::string_view actual) {
  constexpr std::string_view kAnyId = "<id>";
  const std::size_t any = expected.find(kAnyId);
  if (any == expected.npos) return expected == actual;
  if (actual.substr(0, any) != expected.substr(0, any)) return false;
  actual.remove_prefix(any);
  const std::size_t digits = std::min(actual.find_first_not_of("0123456789"), actual.size());
  if (digits == 0) return false;
  return MatchesOutput(expected.substr(any + kAnyId.size()), actual.substr(digits));
}

void AddDifference(Verdict* verdict, std::string_view what, std::string_view expected,
                   std::string_view actual) {
  verdict->details.append(what).append(" is not as expected:\n");
  verdict->details += UnifiedDiff(expected, actual);
}

void CheckAfter(CaseRun* run, const std::string& expected) {
  Verdict* verdict = &run->verdict;
  verdict->after = run->outcome.after == expected;
  if (verdict->after) return;
  AddDifference(verdict, "the graph after", PrintAfter(expected, run->names),
                PrintAfter(run->outcome.after, run->names));
}

void CheckStatus(CaseRun* run) {
  Verdict* verdict = &run->verdict;
  verdict->status = run->outcome.status == run->parsed.status;
  if (verdict->status) return;
  verdict->details += "the status is " + std::to_string(run->outcome.status) + ", expected is " +
                      std::to_string(run->parsed.status) + "\n";
}

void CheckOutput(CaseRun* run) {
  Verdict* verdict = &run->verdict;
  const std::string_view expected = SectionText(run->parsed, kOutput);
  verdict->output = MatchesOutput(expected, run->outcome.output);
  if (!verdict->output) AddDifference(verdict, "the output", expected, run->outcome.output);
}

void CheckState(CaseRun* run) {
  if (!run->parsed.sections[kState].is_present) return;
  Verdict* verdict = &run->verdict;
  const std::string_view expected = SectionText(run->parsed, kState);
  verdict->state = WordsOf(expected) == WordsOf(run->outcome.state);
  if (!verdict->state) AddDifference(verdict, "the state", expected, run->outcome.state);
}

void CheckShape(CaseRun* run) {
  Verdict* verdict = &run->verdict;
  verdict->shape = run->outcome.shape_problems.empty();
  for (const std::string& problem : run->outcome.shape_problems) {
    verdict->details += "shape " + problem + "\n";
  }
  if (run->parsed.is_loose && run->outcome.status == 0 && !run->outcome.is_loose) {
    verdict->shape = false;
    verdict->details += "all rules of shape hold: 'shape: loose' is not needed\n";
  }
}

// --- The whole case ------------------------------------------------------------------------------

std::string DescribeMistake(const PassCase& parsed, SectionName section, const TextError& error) {
  const std::size_t offset = parsed.sections[section].begin + error.offset;
  return DescribeError(parsed.path, parsed.content, ErrorAt(parsed.content, offset, error.message));
}

bool ReadExpected(CaseRun* run, const std::string& before, std::string* expected) {
  if (!run->parsed.sections[kAfter].is_present) return true;
  const std::string_view text = SectionText(run->parsed, kAfter);
  if (Trimmed(text) == "unchanged") {
    *expected = before;
    return true;
  }
  TextError error;
  if (ReadAfter(text, run->names, expected, &error)) return true;
  run->mistake = DescribeMistake(run->parsed, kAfter, error);
  return false;
}

void Execute(CaseRun* run, const std::string& before) {
  ResetProgramState(nullptr);
  if (!ApplyOptions(&run->parsed)) {
    run->mistake = run->parsed.path + ": error: the options are none of the command line\n";
    return;
  }
  CdfgGraph* graph = ReadGraph(before);
  run->outcome = RunGraph(*run, graph);
  ResetProgramState(graph);
  CdfgFreeGraph(graph);
}

void Compare(CaseRun* run, const std::string& expected) {
  CheckStatus(run);
  CheckOutput(run);
  if (run->verdict.status && run->parsed.status == 0) CheckAfter(run, expected);
  CheckState(run);
  CheckShape(run);
}

// A text below its heading, or nothing when there is no text.
std::string Section(SectionName name, std::string text) {
  if (text.empty()) return {};
  if (text.back() != '\n') text += '\n';
  return SectionHead(name) + text;
}

std::string Kept(const PassCase& parsed, SectionName name) {
  const CaseSection& section = parsed.sections[name];
  return parsed.content.substr(section.head, section.end - section.head);
}

std::string RewrittenAfter(const CaseRun& run, const std::string& before) {
  if (run.outcome.status != 0) return {};
  if (run.verdict.after && run.verdict.status) return Kept(run.parsed, kAfter);
  if (run.outcome.after == before) return Section(kAfter, "unchanged");
  return Section(kAfter, PrintAfter(run.outcome.after, run.names));
}

std::string BytesBefore(const CaseRun& run) {
  std::string bytes;
  CaseNames names;
  TextError error;
  ReadBefore(SectionText(run.parsed, kBefore), &bytes, &names, &error);
  return bytes;
}

}  // namespace

CaseRun RunCase(const std::string& path, const std::string& content) {
  CaseRun run;
  if (!ParseCase(path, content, &run.parsed, &run.mistake)) return run;
  std::string before;
  TextError error;
  if (!ReadBefore(SectionText(run.parsed, kBefore), &before, &run.names, &error)) {
    run.mistake = DescribeMistake(run.parsed, kBefore, error);
    return run;
  }
  std::string expected;
  if (!ReadExpected(&run, before, &expected)) return run;
  Execute(&run, before);
  if (run.mistake.empty()) Compare(&run, expected);
  return run;
}

CaseRun RunDesign(const std::string& path, const std::string& bytes) {
  CaseRun run;
  run.parsed.path = path;
  run.parsed.intent = "a whole design";
  for (const PipelineStep& step : Pipeline()) run.parsed.steps.push_back(&step);
  Execute(&run, bytes);
  CheckStatus(&run);
  CheckOutput(&run);
  CheckShape(&run);
  return run;
}

bool Passed(const CaseRun& run) { return run.mistake.empty() && run.verdict.details.empty(); }

std::string RewrittenCase(const CaseRun& run) {
  const PassCase& parsed = run.parsed;
  const Verdict& verdict = run.verdict;
  const Outcome& outcome = run.outcome;
  std::string content = parsed.content.substr(0, parsed.sections[kBefore].end);
  content += RewrittenAfter(run, BytesBefore(run));
  content += verdict.output ? Kept(parsed, kOutput) : Section(kOutput, outcome.output);
  if (verdict.status) {
    content += Kept(parsed, kStatus);
  } else if (outcome.status != 0) {
    content += Section(kStatus, std::to_string(outcome.status));
  }
  content += verdict.state ? Kept(parsed, kState) : SectionHead(kState) + outcome.state;
  return content;
}
