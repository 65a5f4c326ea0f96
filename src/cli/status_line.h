// The one line at the bottom of a terminal that a status is drawn on and
// redrawn in place: a carriage return, then the text fitted to the line and
// padded with spaces to its end, so that nothing of an older text is left.
// Nothing else may be written where the line is drawn while it is shown:
// Hide(), Erase() or Finish() it first.
#ifndef PAIRWELL_CLI_STATUS_LINE_H_
#define PAIRWELL_CLI_STATUS_LINE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace pairwell {

class StatusLine {
 public:
  // A new text is due this long after the last one.
  static constexpr std::uint64_t kIntervalMs = 100;

  // Draws on stream. flush_first (null for none) is flushed before every
  // drawing, so that what it holds for the same place comes first.
  StatusLine(std::FILE* stream, std::FILE* flush_first);
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;

  // The characters a text may have: one less than the terminal's width (a
  // terminal may wrap once the last column is written), 79 where the width
  // is unknown.
  std::size_t Columns() const;

  // Whether a new text may be shown: none was yet, or kIntervalMs have
  // passed since the last one.
  bool Due() const;

  // Shows the text (fitted to Columns()) in place of the present one.
  void Show(const std::string& text);
  // Blanks the line, keeping its text for Restore().
  void Hide();
  // Shows the kept text again after Hide().
  void Restore();
  // Blanks the line and forgets its text.
  void Erase();
  // Shows the text and ends the line, which then stays above what follows.
  void Finish(const std::string& text);

 private:
  // Writes "\r", the fitted line and its padding, then `end`.
  void Draw(const std::string& line, const char* end);

  std::FILE* stream_;
  std::FILE* flush_first_;
  std::string line_;  // the fitted text shown, or hidden for Restore()
  bool shown_ = false;
  bool ever_shown_ = false;
  std::uint64_t shown_at_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_CLI_STATUS_LINE_H_
