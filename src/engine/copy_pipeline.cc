#include "engine/copy_pipeline.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "util/file_system.h"

namespace pairwell {

namespace {

// Sources up to this size are read ahead whole; a larger one is read by its
// worker in order, which the system already reads ahead of.
constexpr std::int64_t kReadAheadLargest = std::int64_t{1} << 20;
// How many sources read ahead may wait for a worker: enough to keep the
// disk busy, few enough that what they hold in memory stays small.
constexpr int kReadAheadCount = 64;

}  // namespace

CopyPipeline::CopyPipeline(int threads) {
  const int count = std::max(1, threads);
  workers_.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) workers_.emplace_back([this] { Work(); });
  reader_ = std::thread([this] { ReadAheadOfWorkers(); });
}

CopyPipeline::~CopyPipeline() {
  CancelAll();
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  work_ready_.notify_all();
  read_ready_.notify_all();
  for (std::thread& worker : workers_) worker.join();
  reader_.join();
}

long CopyPipeline::Submit(const std::string& source, const std::string& dest,
                          std::int64_t bytes,
                          std::function<bool()> dest_unchanged) {
  auto job = std::make_shared<Job>();
  job->source = source;
  job->dest = dest;
  job->bytes = bytes;
  job->dest_unchanged = std::move(dest_unchanged);
  long ticket = 0;
  bool wake_reader = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    ticket = next_ticket_++;
    jobs_.emplace(ticket, job);
    queue_.push_back(job);
    if (bytes <= kReadAheadLargest) {
      to_read_.push_back(job);
      wake_reader = to_read_.size() == 1;
    }
    outstanding_bytes_ += bytes;
  }
  work_ready_.notify_one();
  if (wake_reader) read_ready_.notify_one();
  return ticket;
}

std::shared_ptr<CopyPipeline::Job> CopyPipeline::Find(long ticket) const {
  const auto it = jobs_.find(ticket);
  return it == jobs_.end() ? nullptr : it->second;
}

bool CopyPipeline::Wait(long ticket, std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::shared_ptr<Job> job = Find(ticket);
  if (job == nullptr) return true;
  const std::int64_t seen = job->written.load();
  ++job->waiters;
  job_changed_.wait_for(lock, timeout,
                        [&] { return job->ended || job->written != seen; });
  --job->waiters;
  return job->ended;
}

CopyPipeline::Result CopyPipeline::Take(long ticket) {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::shared_ptr<Job> job = Find(ticket);
  if (job == nullptr || !job->ended) return Result{ECANCELED, std::string()};
  jobs_.erase(ticket);
  outstanding_bytes_ -= job->bytes;
  return std::move(job->result);
}

void CopyPipeline::Cancel(long ticket) {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::shared_ptr<Job> job = Find(ticket);
  if (job == nullptr) return;
  jobs_.erase(ticket);
  outstanding_bytes_ -= job->bytes;
  job->cancelled = true;
  // A copy still running removes its own temporary file when it ends.
  if (job->ended && !job->result.temp.empty()) {
    DeleteFile(job->result.temp);
    job->result.temp.clear();
  }
}

void CopyPipeline::CancelAll() {
  std::vector<long> tickets;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    tickets.reserve(jobs_.size());
    for (const auto& entry : jobs_) tickets.push_back(entry.first);
  }
  for (long ticket : tickets) Cancel(ticket);
}

std::int64_t CopyPipeline::BytesWritten(long ticket) const {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::shared_ptr<Job> job = Find(ticket);
  return job == nullptr ? 0 : job->written.load();
}

std::int64_t CopyPipeline::BytesPending() const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::int64_t bytes = 0;
  // A source grown since the scan counts no further than its share.
  for (const auto& entry : jobs_) {
    bytes += std::min(entry.second->written.load(), entry.second->bytes);
  }
  return bytes;
}

long CopyPipeline::Outstanding() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<long>(jobs_.size());
}

std::int64_t CopyPipeline::OutstandingBytes() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return outstanding_bytes_;
}

void CopyPipeline::Work() {
  for (;;) {
    std::shared_ptr<Job> job;
    bool wake_reader = false;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      work_ready_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
      if (queue_.empty()) return;  // stopping, and nothing left
      job = std::move(queue_.front());
      queue_.pop_front();
      job->started = true;
      // A reader held back by the bound is woken once half of it is free,
      // not for every copy: a wake-up costs more than a read ahead saves.
      if (job->read_ahead) {
        wake_reader = --read_ahead_waiting_ == kReadAheadCount / 2;
      }
    }
    if (wake_reader) read_ready_.notify_one();
    RunJob(job);
  }
}

void CopyPipeline::ReadAheadOfWorkers() {
  for (;;) {
    std::shared_ptr<Job> job;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      read_ready_.wait(lock, [&] {
        return stopping_ ||
               (!to_read_.empty() && read_ahead_waiting_ < kReadAheadCount);
      });
      if (stopping_) return;
      job = std::move(to_read_.front());
      to_read_.pop_front();
      // A worker got there first, or nobody wants the copy any more.
      if (job->started || job->cancelled) continue;
      job->read_ahead = true;
      ++read_ahead_waiting_;
    }
    ReadAhead(job->source, job->bytes);
  }
}

void CopyPipeline::RunJob(const std::shared_ptr<Job>& job) {
  Result result;
  if (job->cancelled) {
    result.error = ECANCELED;
  } else if (job->dest_unchanged && !job->dest_unchanged()) {
    result.error = kDestinationChanged;
  } else {
    const CopyProgress progress = [&](std::int64_t done, std::int64_t) {
      bool waited_for = false;
      {
        // Under the lock, so that a waiter cannot miss the change.
        std::lock_guard<std::mutex> lock(mutex_);
        job->written = done;
        waited_for = job->waiters > 0;
      }
      // The set's thread wakes between chunks, as it would copying itself;
      // copies it is not waiting for leave it asleep.
      if (waited_for) job_changed_.notify_all();
      return !job->cancelled.load();
    };
    result.error = StageCopy(job->source, job->dest, &result.temp, progress);
  }
  bool waited_for = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (job->cancelled && !result.temp.empty()) {
      DeleteFile(result.temp);
      result.temp.clear();
    }
    job->result = std::move(result);
    job->ended = true;
    waited_for = job->waiters > 0;
  }
  if (waited_for) job_changed_.notify_all();
}

}  // namespace pairwell
