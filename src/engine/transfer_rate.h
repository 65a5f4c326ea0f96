// The speed of a set's copying and the time it has left, for a front end
// to show: fed the bytes done now and then, it smooths over the last few
// seconds, so that neither a burst of small files nor a pause while the
// disk catches up makes the figures jump.
#ifndef PAIRWELL_ENGINE_TRANSFER_RATE_H_
#define PAIRWELL_ENGINE_TRANSFER_RATE_H_

#include <cstdint>
#include <deque>
#include <string>

namespace pairwell {

class TransferRate {
 public:
  // The span of samples the speed is taken over.
  static constexpr std::uint64_t kWindowMs = 8000;
  // Less than this known says nothing yet.
  static constexpr std::uint64_t kShortestMs = 1000;

  // Notes that `bytes` were done by the moment `tick_ms` (any steady
  // clock's milliseconds). Fewer bytes than before start it over (a new
  // set's actions).
  void Add(std::int64_t bytes, std::uint64_t tick_ms);
  void Reset() { samples_.clear(); }

  // Bytes per second over the last kWindowMs; -1 while unknown.
  double BytesPerSecond() const;
  // Seconds to do `bytes_left` at that speed; -1 while unknown.
  double SecondsLeft(std::int64_t bytes_left) const;

 private:
  struct Sample {
    std::int64_t bytes;
    std::uint64_t tick_ms;
  };
  // Oldest first; at most one per kSampleMs, none older than the window
  // needs.
  std::deque<Sample> samples_;
};

// "45.2 MiB/s" (the units of ByteCountText); "" while unknown.
std::string SpeedText(double bytes_per_second);
// "0:05 left", "12:40 left", "1:02:03 left"; "" while unknown.
std::string TimeLeftText(double seconds);
// A byte count for people: "512 B", then one decimal in KiB, MiB, GiB or
// TiB ("1.5 KiB", "24.0 MiB").
std::string ByteCountText(std::int64_t bytes);

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_TRANSFER_RATE_H_
