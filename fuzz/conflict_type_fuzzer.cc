// Reads a conflict type from an entry of the "Conflict Types" section, then
// a set's custom handling of it, and writes that handling back. The input's
// first line is the entry ("name=value"), the rest the custom handling text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/conflict_descriptor.h"
#include "fuzz_check.h"
#include "silent_user_interface.h"

namespace pairwell {
namespace {

void CheckEntry(const ConflictDescriptor& type) {
  FUZZ_CHECK(type.FlagSetCount() >= 0 &&
             type.FlagSetCount() <= ConflictDescriptor::kMaxPatterns);
  // Resolution 0 may always be chosen, and only resolutions 0..3 exist.
  FUZZ_CHECK((type.AllowedActions & 1) != 0 && type.AllowedActions < 16);
  FUZZ_CHECK(type.DefAction >= kActionUndecided &&
             type.DefAction <= kActionUseNewest);
  FUZZ_CHECK((type.AllowedActions & (1 << type.DefAction)) != 0);
  FUZZ_CHECK(type.Action == type.DefAction);
  FUZZ_CHECK(type.CreateDest && type.DefCreateDest);
  for (int i = 1; i <= type.FlagSetCount(); ++i) {
    // A pattern's value has no bit outside its mask, so it matches itself.
    FUZZ_CHECK((type.Flags(i) & ~type.FlagMask(i)) == 0);
    FUZZ_CHECK(type.MatchesSitu(type.Flags(i)));
  }
}

}  // namespace
}  // namespace pairwell

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using pairwell::ConflictDescriptor;
  static pairwell::SilentUserInterface ui;
  pairwell::SetUserInterface(&ui);

  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::string::size_type line_end = input.find('\n');
  const std::string entry = input.substr(0, line_end);
  const std::string custom =
      line_end == std::string::npos ? "" : input.substr(line_end + 1);
  const std::string::size_type equals = entry.find('=');
  const std::string name = entry.substr(0, equals);
  const std::string value =
      equals == std::string::npos ? "" : entry.substr(equals + 1);

  ConflictDescriptor type;
  type.ReadFromINI(name, value);
  pairwell::CheckEntry(type);

  type.StringToCustomConfig(custom);
  const std::string written = type.CustomConfigToString();
  // The written text starts with the number, so only the number reads back.
  ConflictDescriptor reread;
  reread.CopyFrom(type);
  reread.StringToCustomConfig(written);
  FUZZ_CHECK(reread.Action == type.Action);
  FUZZ_CHECK(!reread.CreateDest && reread.ListChecked);
  return 0;
}
