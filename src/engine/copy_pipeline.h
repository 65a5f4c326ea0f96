// Copies written ahead on worker threads while the set's own thread keeps
// the order that everything else sees. The set submits the copies of the
// files after the one at hand; each becomes a staged copy (a temporary file
// beside its destination holding the source's bytes and attributes) that
// the set takes when the file's turn comes, and puts in place itself. The
// workers never touch a destination: only temporary files they own.
//
// Small sources are read ahead of the workers: one more thread asks the
// system to start reading the next few while the workers write, so that
// the disk has many reads to serve at once instead of one per worker.
#ifndef PAIRWELL_ENGINE_COPY_PIPELINE_H_
#define PAIRWELL_ENGINE_COPY_PIPELINE_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace pairwell {

class CopyPipeline {
 public:
  // What became of a copy.
  struct Result {
    int error = 0;     // 0, or the system error number
    std::string temp;  // the staged copy when error is 0
  };

  // Starts `threads` workers (at least 1).
  explicit CopyPipeline(int threads);
  // Cancels what is left and removes every temporary file not taken.
  ~CopyPipeline();
  CopyPipeline(const CopyPipeline&) = delete;
  CopyPipeline& operator=(const CopyPipeline&) = delete;

  // Queues a copy of source to beside dest; `bytes` is what it is expected
  // to write (for the bounds and the progress). When dest_unchanged (if
  // given) says no just before the copy starts, the result is
  // kDestinationChanged and nothing is written; it runs on a worker, so it
  // may touch only what it holds. Returns the copy's ticket (>0).
  long Submit(const std::string& source, const std::string& dest,
              std::int64_t bytes,
              std::function<bool()> dest_unchanged = std::function<bool()>());

  // Waits at most `timeout` for the copy to end or to write its next chunk
  // (at most a few MiB); true once it has ended.
  bool Wait(long ticket, std::chrono::milliseconds timeout);

  // The result of an ended copy, which is then forgotten: its temporary
  // file belongs to the caller from now on.
  Result Take(long ticket);

  // Stops the copy (at once when running) and removes its temporary file.
  void Cancel(long ticket);

  // Stops every copy and removes the temporary files not taken.
  void CancelAll();

  // Bytes written so far by the copy, and by every copy not yet taken.
  std::int64_t BytesWritten(long ticket) const;
  std::int64_t BytesPending() const;

  // Copies submitted and not yet taken, and the bytes they are to write.
  long Outstanding() const;
  std::int64_t OutstandingBytes() const;

 private:
  struct Job {
    std::string source;
    std::string dest;
    std::int64_t bytes = 0;
    std::function<bool()> dest_unchanged;
    std::atomic<std::int64_t> written{0};
    std::atomic<bool> cancelled{false};
    bool started = false;     // taken by a worker
    bool read_ahead = false;  // its source asked for before it started
    int waiters = 0;          // threads in Wait for it
    bool ended = false;
    Result result;
  };

  void Work();
  void RunJob(const std::shared_ptr<Job>& job);
  void ReadAheadOfWorkers();
  std::shared_ptr<Job> Find(long ticket) const;

  mutable std::mutex mutex_;
  std::condition_variable work_ready_;
  // Signalled when a copy ends or writes a chunk.
  std::condition_variable job_changed_;
  std::deque<std::shared_ptr<Job>> queue_;
  // The small copies whose sources are still to be read ahead, in order,
  // and how many read ahead wait for a worker.
  std::condition_variable read_ready_;
  std::deque<std::shared_ptr<Job>> to_read_;
  int read_ahead_waiting_ = 0;
  std::unordered_map<long, std::shared_ptr<Job>> jobs_;
  long next_ticket_ = 1;
  std::int64_t outstanding_bytes_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> workers_;
  std::thread reader_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_COPY_PIPELINE_H_
