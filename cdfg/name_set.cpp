#include "cdfg/name_set.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <iterator>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "cdfg/text_table.h"

namespace {

// The names that NameSetFresh has made of one prefix, and those it has found taken: numbered in a
// row, so they are kept as the row that they are. There are as many of them as temporaries, and
// hardly ever another name that looks like one.
struct Family {
  std::string prefix;
  int digits;
  int first;  // the numbers from here on
  int next;   // and below this one are taken
};

struct NameSet {
  // One table for all others: names that differ in a counter alone are asked for one after the
  // other, and lie side by side here, while their byte sums would scatter them.
  TextTable table;
  bool has_reserved = false;  // a name in the table begins like the families do
  std::vector<Family> families;
};

std::unique_ptr<NameSet> name_set;

// What the names of a program do not begin with, as a rule.
bool IsReserved(std::string_view name) { return name.starts_with("__"); }

// Whether these are the digits of a number of the family, as NameSetFresh writes it.
bool IsNumberOf(const Family& family, std::string_view text) {
  const auto digits = static_cast<std::size_t>(std::max(family.digits, 0));
  if (text.size() < digits || (text.size() > digits && text.front() == '0')) return false;
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} && end == text.data() + text.size() && text.front() != '-' &&
         number >= family.first && number < family.next;
}

bool IsInFamily(std::string_view name) {
  if (!IsReserved(name)) return false;
  const auto holds = [&](const Family& family) {
    return name.starts_with(family.prefix) && IsNumberOf(family, name.substr(family.prefix.size()));
  };
  return std::any_of(name_set->families.begin(), name_set->families.end(), holds);
}

bool IsInTable(std::string_view name) {
  if (IsReserved(name) && !name_set->has_reserved) return false;
  return name_set->table.Contains(name);
}

// False when the name is there already.
bool Add(std::string_view name) {
  if (IsInFamily(name)) return false;
  if (IsReserved(name)) name_set->has_reserved = true;
  return name_set->table.Add(name);
}

}  // namespace

unsigned NameSetBucket(const char* name) {
  unsigned sum = 0;
  for (; *name != '\0'; ++name) {
    sum += static_cast<unsigned>(static_cast<int>(static_cast<signed char>(*name)));
  }
  return sum & 255U;
}

int NameSetInit() {
  name_set = std::make_unique<NameSet>();
  return 0;
}

int NameSetAdd(const char* name) {
  if (name_set == nullptr || name == nullptr) return -1;
  Add(name);
  return 0;
}

int NameSetContains(const char* name) {
  if (name_set == nullptr || name == nullptr) return 0;
  return IsInTable(name) || IsInFamily(name) ? 1 : 0;
}

// --- Fresh names ---------------------------------------------------------------------------------

namespace {

// A name as it was made of its parts.
struct NumberedName {
  std::string text;
  std::size_t prefix_size = 0;
  int digits = -1;  // -1: not made yet
  int number = 0;

  std::string_view Prefix() const { return std::string_view(text).substr(0, prefix_size); }
};

NumberedName fresh;

// The prefix and the number, in decimal with at least so many digits.
void Make(NumberedName& name, std::string_view prefix, int digits, int number) {
  char text[16];
  const unsigned magnitude =
      number < 0 ? 0U - static_cast<unsigned>(number) : static_cast<unsigned>(number);
  const char* end = std::to_chars(std::begin(text), std::end(text), magnitude).ptr;
  const auto length = static_cast<std::size_t>(end - text);
  const auto wanted = static_cast<std::size_t>(std::max(digits, 0));
  name.text.assign(prefix);
  if (number < 0) name.text.push_back('-');
  if (length < wanted) name.text.append(wanted - length, '0');
  name.text.append(text, length);
  name.prefix_size = prefix.size();
  name.digits = digits;
  name.number = number;
}

// The same for the name whose number is one higher, by counting on in its digits; false, with
// nothing done, where there is no digit for the carry.
bool CountOn(NumberedName& name) {
  std::size_t last = name.text.size();
  while (last > name.prefix_size && name.text[last - 1] == '9') --last;
  if (last == name.prefix_size || name.number < 0) return false;
  ++name.text[last - 1];
  for (; last < name.text.size(); ++last) name.text[last] = '0';
  ++name.number;
  return true;
}

// Makes `fresh` the name of this number. It follows the last one as a rule.
void MakeFresh(std::string_view prefix, int digits, int number) {
  // The first comparison of the numbers keeps the second from going below the lowest.
  const bool follows = fresh.digits == digits && fresh.number < number &&
                       fresh.number == number - 1 && fresh.Prefix() == prefix;
  if (!follows || !CountOn(fresh)) Make(fresh, prefix, digits, number);
}

// Whether a name made of one prefix could be one made of the other.
bool AreAlike(std::string_view prefix, std::string_view other) {
  return prefix.starts_with(other) || other.starts_with(prefix);
}

// The family of the prefix whose next number is `number`, begun when there is none of the prefix;
// null when the name is an ordinary one.
Family* FamilyOf(std::string_view prefix, int digits, int number) {
  if (!IsReserved(prefix) || number < 0 || number == INT_MAX) return nullptr;
  for (Family& family : name_set->families) {
    const bool is_next = family.next == number && family.digits == digits;
    if (is_next && family.prefix == prefix) return &family;
    if (AreAlike(prefix, family.prefix)) return nullptr;
  }
  return &name_set->families.emplace_back(Family{std::string(prefix), digits, number, number});
}

// Fresh names are asked for in the order of their numbers, and ten that follow one another lie side
// by side: the next ten are fetched while these are used up.
void ExpectNextTen(std::string_view prefix, int digits, int number) {
  constexpr int kTen = 10;
  if (number % kTen != 0 || number > INT_MAX - kTen) return;
  NumberedName name;
  Make(name, prefix, digits, number + kTen);
  name_set->table.Expect(name.text);
}

// Adds the fresh name; false when it is there already.
bool AddFresh() {
  if (Family* family = FamilyOf(fresh.Prefix(), fresh.digits, fresh.number)) {
    ++family->next;
    return !IsInTable(fresh.text);
  }
  ExpectNextTen(fresh.Prefix(), fresh.digits, fresh.number);
  return Add(fresh.text);
}

}  // namespace

const std::string& NameSetFresh(const char* prefix, int digits, int* counter) {
  bool is_new = false;
  while (!is_new) {
    const int number = *counter;
    *counter = static_cast<int>(static_cast<unsigned>(number) + 1);
    MakeFresh(prefix, digits, number);
    is_new = name_set == nullptr || AddFresh();
  }
  return fresh.text;
}

void NameSetFree() { name_set.reset(); }
