#include "cli/status_line.h"

#include "cli/line_text.h"
#include "util/system.h"
#include "util/terminal.h"

namespace pairwell {

namespace {
constexpr std::size_t kUnknownWidthColumns = 79;
}  // namespace

StatusLine::StatusLine(std::FILE* stream, std::FILE* flush_first)
    : stream_(stream), flush_first_(flush_first) {}

std::size_t StatusLine::Columns() const {
  const int width = TerminalWidth(stream_);
  return width > 1 ? static_cast<std::size_t>(width - 1) : kUnknownWidthColumns;
}

bool StatusLine::Due() const {
  return !ever_shown_ || TickCount() - shown_at_ >= kIntervalMs;
}

void StatusLine::Show(const std::string& text) {
  shown_at_ = TickCount();
  ever_shown_ = true;
  const std::string line = FitLine(text, Columns());
  if (shown_ && line == line_) return;
  line_ = line;
  Draw(line_, "");
  shown_ = true;
}

void StatusLine::Hide() {
  if (!shown_) return;
  Draw(std::string(), "\r");
  shown_ = false;
}

void StatusLine::Restore() {
  if (shown_ || line_.empty()) return;
  Draw(line_, "");
  shown_ = true;
}

void StatusLine::Erase() {
  Hide();
  line_.clear();
}

void StatusLine::Finish(const std::string& text) {
  Draw(FitLine(text, Columns()), "\n");
  line_.clear();
  shown_ = false;
}

void StatusLine::Draw(const std::string& line, const char* end) {
  if (flush_first_ != nullptr) std::fflush(flush_first_);
  const std::size_t columns = Columns();
  const std::size_t length = CharCount(line);
  std::string out = "\r" + line;
  if (length < columns) out.append(columns - length, ' ');
  out += end;
  std::fwrite(out.data(), 1, out.size(), stream_);
  std::fflush(stream_);
}

}  // namespace pairwell
