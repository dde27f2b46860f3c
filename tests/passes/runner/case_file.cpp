#include "tests/passes/runner/case_file.h"

#include <charconv>
#include <optional>

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kSectionWords[] = {"before", "after", "output", "status", "state"};

struct CaseReader {
  PassCase* parsed;
  std::string* error;
  int line = 0;
  std::optional<SectionName> section = {};  // the one being read
};

bool Fail(CaseReader* reader, const std::string& what) {
  *reader->error =
      reader->parsed->path + ":" + std::to_string(reader->line) + ": error: " + what + "\n";
  return false;
}

// --- Steps ---------------------------------------------------------------------------------------

// The place of a step in the pipeline.
std::optional<std::size_t> FindStep(std::string_view name) {
  for (std::size_t i = 0; i < Pipeline().size(); ++i) {
    if (Pipeline()[i].name == name) return i;
  }
  return std::nullopt;
}

bool AddRange(CaseReader* reader, std::string_view first, std::string_view last) {
  const auto from = FindStep(first);
  const auto to = FindStep(last);
  if (!from || !to || *from > *to) {
    return Fail(reader, "expected two steps of the pipeline in their order around '..'");
  }
  for (std::size_t i = *from; i <= *to; ++i) reader->parsed->steps.push_back(&Pipeline()[i]);
  return true;
}

bool AddStep(CaseReader* reader, std::string_view name) {
  if (name == "pipeline") return AddRange(reader, Pipeline().front().name, Pipeline().back().name);
  const std::size_t dots = name.find("..");
  if (dots != name.npos) {
    return AddRange(reader, Trimmed(name.substr(0, dots)), Trimmed(name.substr(dots + 2)));
  }
  const auto place = FindStep(name);
  if (!place) return Fail(reader, "no step is called '" + std::string(name) + "'");
  if (Pipeline()[*place].run == nullptr) {
    return Fail(reader, "the step '" + std::string(name) + "' is not built yet");
  }
  reader->parsed->steps.push_back(&Pipeline()[*place]);
  return true;
}

bool AddSteps(CaseReader* reader, std::string_view list) {
  while (true) {
    const std::size_t comma = list.find(',');
    if (!AddStep(reader, Trimmed(list.substr(0, comma)))) return false;
    if (comma == list.npos) return true;
    list.remove_prefix(comma + 1);
  }
}

// --- Lines ---------------------------------------------------------------------------------------

bool TakeSetting(CaseReader* reader, std::string_view line) {
  const std::size_t colon = line.find(':');
  const std::string_view key = Trimmed(line.substr(0, colon));
  const std::string_view value =
      colon == line.npos ? std::string_view() : Trimmed(line.substr(colon + 1));
  if (key == "pass") return AddSteps(reader, value);
  if (key == "options") {
    reader->parsed->options = WordsOf(value);
    return true;
  }
  if (key == "shape" && value == "damaged") {
    reader->parsed->is_damaged = true;
    return true;
  }
  if (key == "shape" && value == "loose") {
    reader->parsed->is_loose = true;
    return true;
  }
  return Fail(reader,
              "expected 'pass: ', 'options: ', 'shape: damaged', 'shape: loose' or '-- before --'");
}

std::optional<SectionName> SectionOf(std::string_view line) {
  for (int name = 0; name < kSectionCount; ++name) {
    if (line == "-- " + std::string(kSectionWords[name]) + " --") {
      return static_cast<SectionName>(name);
    }
  }
  return std::nullopt;
}

bool BeginSection(CaseReader* reader, SectionName name, std::size_t head, std::size_t begin) {
  if (reader->section && name <= *reader->section) {
    return Fail(reader, "expected each section once: before, after, output, status, state");
  }
  reader->section = name;
  reader->parsed->sections[name] = {true, head, begin, reader->parsed->content.size()};
  return true;
}

bool TakeLine(CaseReader* reader, std::size_t head, std::size_t end) {
  PassCase* parsed = reader->parsed;
  const std::string_view line = Trimmed(std::string_view(parsed->content).substr(head, end - head));
  ++reader->line;
  if (reader->line == 1) {
    if (!line.starts_with("# ")) return Fail(reader, "expected '# ' and a sentence of intent");
    parsed->intent = Trimmed(line.substr(1));
    return true;
  }
  if (const auto section = SectionOf(line)) {
    if (reader->section) parsed->sections[*reader->section].end = head;
    return BeginSection(reader, *section, head, end);
  }
  if (reader->section || line.empty() || line.starts_with('#')) return true;
  return TakeSetting(reader, line);
}

// --- The whole case ------------------------------------------------------------------------------

bool TakeStatus(CaseReader* reader) {
  PassCase* parsed = reader->parsed;
  if (!parsed->sections[kStatus].is_present) return true;
  const std::string_view text = Trimmed(SectionText(*parsed, kStatus));
  const auto [end, problem] =
      std::from_chars(text.data(), text.data() + text.size(), parsed->status);
  if (problem == std::errc() && end == text.data() + text.size()) return true;
  return Fail(reader, "expected a number under '-- status --'");
}

bool CheckWhole(CaseReader* reader) {
  const PassCase& parsed = *reader->parsed;
  if (parsed.steps.empty()) return Fail(reader, "expected 'pass: ' and the name of a step");
  if (!parsed.sections[kBefore].is_present) return Fail(reader, "expected '-- before --'");
  if (!TakeStatus(reader)) return false;
  const bool has_after = parsed.sections[kAfter].is_present;
  if (parsed.status == 0 && !has_after) return Fail(reader, "expected '-- after --'");
  if (parsed.status != 0 && has_after) {
    return Fail(reader, "expected no '-- after --' where the run stops");
  }
  return true;
}

}  // namespace

bool ParseCase(const std::string& path, const std::string& content, PassCase* parsed,
               std::string* error) {
  *parsed = PassCase();
  parsed->path = path;
  parsed->content = content;
  if (!content.empty() && content.back() != '\n') parsed->content += '\n';
  CaseReader reader{parsed, error};
  for (std::size_t head = 0; head < parsed->content.size();) {
    const std::size_t end = parsed->content.find('\n', head) + 1;
    if (!TakeLine(&reader, head, end)) return false;
    head = end;
  }
  return CheckWhole(&reader);
}

std::string_view SectionText(const PassCase& parsed, SectionName name) {
  const CaseSection& section = parsed.sections[name];
  return std::string_view(parsed.content).substr(section.begin, section.end - section.begin);
}

std::string SectionHead(SectionName name) {
  return "-- " + std::string(kSectionWords[name]) + " --\n";
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::vector<std::string> WordsOf(std::string_view text) {
  std::vector<std::string> words;
  for (text = Trimmed(text); !text.empty();) {
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    words.emplace_back(text.substr(0, end));
    text = Trimmed(text.substr(end));
  }
  return words;
}
