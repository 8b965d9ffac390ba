#include "words.h"

#include <string_view>

namespace vptzctl {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// What a backslash between double quotes takes its meaning from.
constexpr std::string_view kSpecialInQuotes = "$`\"\\";

class Splitter {
 public:
  explicit Splitter(const std::string& text) : text_(text) {}

  SplitLine Split() {
    while (at_ < text_.size()) Take(text_[at_++]);
    if (quote_ != '\0') line_.complete = false;
    EndWord();
    return std::move(line_);
  }

 private:
  void Take(char c) {
    if (quote_ == '\'') {
      TakeLiterally(c);
    } else if (c == '\\') {
      TakeEscaped();
    } else if (quote_ == '"') {
      c == '"' ? EndQuote() : Add(c);
    } else {
      TakePlain(c);
    }
  }

  void TakePlain(char c) {
    if (c == '\'' || c == '"') {
      quote_ = c;
      in_word_ = true;
    } else if (kBlanks.find(c) != std::string_view::npos) {
      EndWord();
    } else if (c == '#' && !in_word_) {
      at_ = text_.find('\n', at_);
      if (at_ == std::string::npos) at_ = text_.size();
    } else {
      Add(c);
    }
  }

  void TakeLiterally(char c) { c == '\'' ? EndQuote() : Add(c); }

  // A line's end behind a backslash is no end.
  void TakeEscaped() {
    if (at_ == text_.size()) {
      line_.complete = false;
      return;
    }
    const char c = text_[at_++];
    if (c == '\n') return;
    if (quote_ == '"' && kSpecialInQuotes.find(c) == std::string_view::npos) Add('\\');
    Add(c);
  }

  void Add(char c) {
    word_ += c;
    in_word_ = true;
  }

  void EndQuote() { quote_ = '\0'; }

  void EndWord() {
    if (in_word_) line_.words.push_back(std::move(word_));
    word_.clear();
    in_word_ = false;
  }

  const std::string& text_;
  std::size_t at_ = 0;
  char quote_ = '\0';
  bool in_word_ = false;  // a word may be empty: ''
  std::string word_;
  SplitLine line_;
};

}  // namespace

SplitLine SplitWords(const std::string& text) { return Splitter(text).Split(); }

std::string Escaped(const std::string& word) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:,+@%=^";
  std::string escaped;
  for (const char c : word) {
    const bool plain = kPlain.find(c) != std::string_view::npos || static_cast<unsigned char>(c) >= 0x80;
    escaped += plain ? std::string(1, c) : std::string{'\\', c};
  }
  return escaped.empty() ? "''" : escaped;
}

}  // namespace vptzctl
