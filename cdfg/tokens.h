// Splitting of directive texts into words.
#pragma once

#include <string_view>

// Hands out the tokens of a text one by one; each call names its own delimiters. Runs of delimiters
// count as one, and the delimiter that ends a token belongs to it.
class Tokens {
 public:
  explicit Tokens(std::string_view text) : rest_(text) {}

  // The next token; empty when there is none left.
  std::string_view Next(std::string_view delimiters) {
    const std::size_t begin = rest_.find_first_not_of(delimiters);
    if (begin == std::string_view::npos) {
      rest_ = {};
      return {};
    }
    rest_.remove_prefix(begin);
    const std::size_t end = rest_.find_first_of(delimiters);
    const std::string_view token = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return token;
  }

 private:
  std::string_view rest_;
};
