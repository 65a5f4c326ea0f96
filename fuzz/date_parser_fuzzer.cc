// Reads any text as a date and as a moment and formats what it read;
// formats the input's first eight bytes taken as a day count too, whatever
// number they make (infinities and NaN included).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_check.h"
#include "util/date_time.h"

namespace pairwell {
namespace {

void FormatEveryWay(double date, const std::string& pattern) {
  PartsFromDate(date);
  FormatGeneralDate(date);
  FormatDate(date, "mmm d, yyyy hh:nnAMPM");
  FormatDate(date, pattern);
}

void CheckText(const std::string& text) {
  double date = 0;
  if (!ParseDateText(text, &date)) return;
  FormatEveryWay(date, text);
  // A date read is written the way it is read back, to the second.
  double again = 0;
  FUZZ_CHECK(ParseDateText(FormatGeneralDate(date), &again));
  FUZZ_CHECK(again == date);
}

// A moment read is written in this zone's offset and reads back the same.
void CheckMoment(const std::string& text) {
  std::int64_t seconds = 0;
  double written = 0;
  if (!ParseMoment(text, &seconds, &written)) return;
  FormatEveryWay(written, text);
  const std::string again_text = FormatMoment(seconds);
  std::int64_t again = 0;
  if (ParseMoment(again_text, &again, &written)) FUZZ_CHECK(again == seconds);
}

}  // namespace
}  // namespace pairwell

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  pairwell::CheckText(text);
  pairwell::CheckMoment(text);
  if (size >= sizeof(double)) {
    double raw = 0;
    std::memcpy(&raw, data, sizeof raw);
    pairwell::FormatEveryWay(raw, text);
  }
  return 0;
}
