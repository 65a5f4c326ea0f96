#include "engine/conflict_descriptor.h"

#include <stdexcept>

#include "util/command_line.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

// Value and mask of a one-character state code; false for anything else.
bool StateCode(char code, int* value, int* mask) {
  struct Code {
    char letter;
    int value;
    int mask;
  };
  static const Code kCodes[] = {
      {'0', 0, 7}, {'1', 1, 7}, {'2', 0, 6}, {'3', 2, 7},
      {'4', 3, 7}, {'5', 2, 6}, {'6', 0, 5}, {'M', 0, 5},
      {'7', 1, 5}, {'D', 1, 5}, {'8', 0, 4}, {'S', 0, 4},
      {'N', 4, 7}, {'H', 0, 1}, {'!', 0, 2}, {'?', 0, 0},
  };
  const char upper = UpperChar(code);
  for (const Code& c : kCodes) {
    if (c.letter == upper) {
      *value = c.value;
      *mask = c.mask;
      return true;
    }
  }
  return false;
}

// The resolution a keyword names, 0 when it names none.
int ResolutionOf(const std::string& keyword) {
  const std::string upper = UpperCase(keyword);
  if (upper == "DONOTHING") return kActionDoNothing;
  if (upper == "DELETEALL") return kActionDeleteAll;
  if (upper == "USENEWEST") return kActionUseNewest;
  return kActionUndecided;
}

// Turns the two-character escapes "\n" and "\r" into line breaks.
std::string UnescapeDescription(const std::string& text) {
  std::string result;
  for (std::string::size_type i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() &&
        (text[i + 1] == 'n' || text[i + 1] == 'r')) {
      result += "\r\n";
      ++i;
    } else {
      result.push_back(text[i]);
    }
  }
  return result;
}

void CheckPatternIndex(int i) {
  if (i < 1 || i > ConflictDescriptor::kMaxPatterns) {
    throw std::out_of_range("pattern index " + std::to_string(i) +
                            " is outside 1..4");
  }
}

}  // namespace

bool ConflictDescriptor::ParsePattern(const std::string& word,
                                      std::uint16_t* value,
                                      std::uint16_t* mask) const {
  int synced_value = 0, synced_mask = 0, copies_value = 0, copies_mask = 0;
  if (!StateCode(word[0], &synced_value, &synced_mask) ||
      !StateCode(word[2], &copies_value, &copies_mask)) {
    return false;
  }
  const char missing = word[1];
  if (missing != '0' && missing != '1' && missing != '?') return false;
  *value = static_cast<std::uint16_t>(synced_value * 32 | copies_value * 2 |
                                      (missing == '1' ? 16 : 0));
  *mask = static_cast<std::uint16_t>(synced_mask * 32 | copies_mask * 2 |
                                     (missing != '?' ? 16 : 0));
  return true;
}

void ConflictDescriptor::ReadWord(const std::string& word, bool* error_mark,
                                  int* last_resolution) {
  if (word.size() == 3 || word.size() == 4) {
    std::uint16_t value = 0, mask = 0;
    // After one bad pattern, every later pattern of the entry is refused
    // too, each with its own message.
    if (*error_mark || !ParsePattern(word, &value, &mask)) {
      *error_mark = true;
      MsgBox("An error was detected in the INI file.", kMbCritical);
      return;
    }
    if (flag_set_count_ < kMaxPatterns) {
      values_[flag_set_count_] = value;
      masks_[flag_set_count_] = mask;
      ++flag_set_count_;
    }
    return;
  }
  if (word.find(' ') != std::string::npos) {
    Description = UnescapeDescription(word);
    return;
  }
  std::string keyword = word;
  const bool starred = !keyword.empty() && keyword.back() == '*';
  if (starred) keyword.pop_back();
  // An unknown word stands for the last known keyword, so it is harmless
  // unless starred.
  const int resolution = ResolutionOf(keyword);
  if (resolution != kActionUndecided) *last_resolution = resolution;
  AllowedActions |= static_cast<std::uint16_t>(1u << *last_resolution);
  if (starred) DefAction = static_cast<std::int16_t>(*last_resolution);
}

void ConflictDescriptor::ReadFromINI(const std::string& name,
                                     const std::string& value) {
  DefCreateDest = true;
  AllowedActions = 1;
  std::string rest = name;
  if (StartsWith(rest, "*")) {
    Configurable = false;
    rest.erase(0, 1);
  } else {
    Configurable = true;
    ListChecked = !StartsWith(rest, "+");
    if (!ListChecked) rest.erase(0, 1);
  }
  Name = rest;
  bool error_mark = false;
  int last_resolution = kActionUndecided;
  for (const std::string& word : SplitCommandLine(value)) {
    ReadWord(word, &error_mark, &last_resolution);
  }
  UseDefaults();
}

void ConflictDescriptor::UseDefaults() {
  Action = DefAction;
  CreateDest = DefCreateDest;
}

void ConflictDescriptor::CopyFrom(const ConflictDescriptor& other) {
  *this = other;
}

std::uint16_t ConflictDescriptor::Flags(int i) const {
  CheckPatternIndex(i);
  return values_[i - 1];
}

std::uint16_t ConflictDescriptor::FlagMask(int i) const {
  CheckPatternIndex(i);
  return masks_[i - 1];
}

bool ConflictDescriptor::MatchesSitu(int situation) const {
  for (int i = 0; i < flag_set_count_; ++i) {
    if ((situation & masks_[i]) == values_[i]) return true;
  }
  return false;
}

std::string ConflictDescriptor::CustomConfigToString() const {
  std::string text = std::to_string(Action);
  if (CreateDest) text += "C";
  if (!ListChecked) text += "+";
  return text;
}

void ConflictDescriptor::StringToCustomConfig(const std::string& text) {
  std::string rest = Trim(text);
  CreateDest = false;
  ListChecked = true;
  if (StartsWith(rest, "+")) {
    ListChecked = false;
    rest.erase(0, 1);
  }
  if (StartsWith(rest, "C")) {
    CreateDest = true;
    rest.erase(0, 1);
  }
  if (!rest.empty()) {
    Action = LeadingInteger(rest);
  }
}

}  // namespace pairwell
