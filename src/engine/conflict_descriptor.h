// One conflict type: a class of file situations, the resolutions allowed for
// it and the one in force for a set.
#ifndef PAIRWELL_ENGINE_CONFLICT_DESCRIPTOR_H_
#define PAIRWELL_ENGINE_CONFLICT_DESCRIPTOR_H_

#include <cstdint>
#include <string>

namespace pairwell {

// Resolution codes; also the bit numbers of AllowedActions.
constexpr int kActionUndecided = 0;
constexpr int kActionDoNothing = 1;
constexpr int kActionDeleteAll = 2;
constexpr int kActionUseNewest = 3;

class ConflictDescriptor {
 public:
  // At most this many patterns are kept per type.
  static constexpr int kMaxPatterns = 4;

  ConflictDescriptor() = default;

  // The entry's name without its "*" or "+" prefix.
  std::string Name;
  // False when the entry's name began with "*": the type is then not offered
  // for per-set configuration.
  bool Configurable = true;
  // The check mark beside the type; false when the name began with "+" or a
  // custom configuration carries "+".
  bool ListChecked = true;
  // The default resolution; 0 unless a starred keyword named one.
  std::int16_t DefAction = kActionUndecided;
  // The resolution in force for the owning set.
  std::int32_t Action = kActionUndecided;
  bool DefCreateDest = true;
  bool CreateDest = true;
  // Bit n set when resolution n may be chosen; bit 0 is always set.
  std::uint16_t AllowedActions = 1;
  // Explanation for the person; may hold CR LF line breaks.
  std::string Description;

  // Fills the descriptor from one "Conflict Types" entry, then calls
  // UseDefaults. A malformed pattern shows "An error was detected in the INI
  // file." and is dropped, and so is every later pattern of the entry.
  void ReadFromINI(const std::string& name, const std::string& value);

  // Action = DefAction; CreateDest = DefCreateDest.
  void UseDefaults();

  // Copies every field, the patterns included.
  void CopyFrom(const ConflictDescriptor& other);

  // Value and mask of pattern i, 1..kMaxPatterns; other indexes throw
  // std::out_of_range.
  std::uint16_t Flags(int i) const;
  std::uint16_t FlagMask(int i) const;
  // Number of patterns in use, 0..kMaxPatterns.
  int FlagSetCount() const { return flag_set_count_; }

  // True when some pattern in use accepts the situation code:
  // (situation & mask) == value. No pattern matches nothing.
  bool MatchesSitu(int situation) const;

  // The set's custom handling of the type: Action in decimal, then "C" when
  // CreateDest, then "+" when the type is not checked ("3", "3C", "2C+").
  std::string CustomConfigToString() const;

  // Reads a custom handling text. The letters are looked for before the
  // number ("+C3"), while CustomConfigToString writes them after it, so a
  // written text reads back with only its number ("3C+" gives Action 3,
  // CreateDest false, ListChecked true). That is how older files were read,
  // and it stays so.
  void StringToCustomConfig(const std::string& text);

 private:
  // Reads one pattern word; false when it is malformed.
  bool ParsePattern(const std::string& word, std::uint16_t* value,
                    std::uint16_t* mask) const;
  void ReadWord(const std::string& word, bool* error_mark,
                int* last_resolution);

  std::uint16_t values_[kMaxPatterns] = {0, 0, 0, 0};
  std::uint16_t masks_[kMaxPatterns] = {0, 0, 0, 0};
  int flag_set_count_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_CONFLICT_DESCRIPTOR_H_
