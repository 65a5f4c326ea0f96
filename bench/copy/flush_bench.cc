// What durability costs a copier, strategy by strategy.
//
// Each file is copied the way the engine copies it: open the source, make a
// ".pairwell-partial-XXXXXX" temporary in the destination folder, copy the
// bytes (copy_file_range, else read/write), fchmod, futimens, close, rename.
// The strategies differ only in when the data reaches the disk:
//   none          never (the page cache holds it when the clock stops)
//   fdatasync     each temporary on its worker before close; after the last
//                 rename each destination folder is fsync'ed once
//   syncfs/B      no flush per file; when a batch B (a count of files or of
//                 bytes) is written, one syncfs() of the destination file
//                 system, then that batch's renames; one last syncfs at the end
//   sfr+syncfs/B  as syncfs/B, and each worker starts the writeback of a
//                 file (sync_file_range WRITE) right after writing it
// Before each timed run, outside the clock, the previous destination goes
// and `sync` is run; the source stays cached. The clock stops when the last
// flush returns.
//
// A destination of many files is moved aside, not deleted, and the pile is
// deleted after the workload's last run, a minute before any more files are
// made: on ext4 without a journal the allocator skips every inode freed in
// the last minute one by one, and 20,000 creations right after deleting
// 20,000 files cost two to four times as much. Dropping the page cache is no
// cure: it only trades that for metadata read back from the disk.
//
// Usage: pairwell_bench_flush DIR [--runs N] [--threads 1,2,4,8]
//                             [--workloads small,large] [--strategies none,...]
//                             [--no-reference]
// DIR should be on the disk the real copies go to (the data is kept there
// and reused by a later run).

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

struct File {
  std::string rel;  // "dNNN/fNNN.dat", or a bare name at the top
  uint64_t size = 0;
  size_t batch = 0;
};

struct Workload {
  std::string name;
  std::string src;
  std::vector<std::string> dirs;  // relative, "" excluded
  std::vector<File> files;
  uint64_t bytes = 0;
};

enum class Kind { None, Fdatasync, Syncfs, SfrSyncfs };

struct Strategy {
  std::string label;
  Kind kind;
  size_t batch_files;   // 0: not by count
  uint64_t batch_bytes; // 0: not by bytes
};

[[noreturn]] void Die(const std::string& what) {
  std::fprintf(stderr, "flush_bench: %s: %s\n", what.c_str(), std::strerror(errno));
  std::exit(1);
}

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

void Shell(const std::string& cmd) {
  if (std::system(cmd.c_str()) != 0) {
    std::fprintf(stderr, "flush_bench: failed: %s\n", cmd.c_str());
    std::exit(1);
  }
}

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void WriteAll(int fd, const char* p, size_t n) {
  while (n > 0) {
    ssize_t w = write(fd, p, n);
    if (w < 0) {
      if (errno == EINTR) continue;
      Die("write");
    }
    p += w;
    n -= static_cast<size_t>(w);
  }
}

void FillRandom(std::mt19937_64& rng, std::vector<char>& buf) {
  size_t i = 0;
  for (; i + 8 <= buf.size(); i += 8) {
    uint64_t v = rng();
    std::memcpy(&buf[i], &v, 8);
  }
  for (; i < buf.size(); ++i) buf[i] = static_cast<char>(rng());
}

// The data is made once, with a fixed seed, and kept for later runs.
Workload MakeWorkload(const std::string& root, const std::string& name) {
  Workload w;
  w.name = name;
  w.src = root + "/src-" + name;
  std::mt19937_64 rng(42);
  if (name == "small") {
    for (int d = 0; d < 200; ++d) {
      char dir[16];
      std::snprintf(dir, sizeof dir, "d%03d", d);
      w.dirs.push_back(dir);
      for (int f = 0; f < 100; ++f) {
        char rel[32];
        std::snprintf(rel, sizeof rel, "d%03d/f%03d.dat", d, f);
        File file;
        file.rel = rel;
        file.size = std::uniform_int_distribution<uint64_t>(1024, 8192)(rng);
        w.files.push_back(file);
      }
    }
  } else {
    for (int f = 0; f < 8; ++f) {
      File file;
      file.rel = "big" + std::to_string(f) + ".bin";
      file.size = 128ull << 20;
      w.files.push_back(file);
    }
  }
  for (const File& f : w.files) w.bytes += f.size;

  const std::string ready = root + "/" + name + ".ready";
  if (access(ready.c_str(), F_OK) == 0) return w;
  std::printf("Making the %s data in %s ...\n", name.c_str(), w.src.c_str());
  std::fflush(stdout);
  Shell("rm -rf " + Quote(w.src));
  if (mkdir(w.src.c_str(), 0755) != 0) Die("mkdir " + w.src);
  for (const std::string& d : w.dirs)
    if (mkdir((w.src + "/" + d).c_str(), 0755) != 0) Die("mkdir " + d);
  std::vector<char> buf;
  const struct timespec day_old[2] = {{1700000000, 0}, {1700000000, 0}};
  for (const File& f : w.files) {
    const std::string path = w.src + "/" + f.rel;
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) Die("create " + path);
    for (uint64_t left = f.size; left > 0;) {
      const size_t n = static_cast<size_t>(std::min<uint64_t>(left, 16u << 20));
      buf.resize(n);
      FillRandom(rng, buf);
      WriteAll(fd, buf.data(), n);
      left -= n;
    }
    if (futimens(fd, day_old) != 0) Die("futimens");
    close(fd);
  }
  Shell("sync");
  int fd = open(ready.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  if (fd >= 0) close(fd);
  return w;
}

void Warm(const Workload& w) {
  std::vector<char> buf(1 << 20);
  for (const File& f : w.files) {
    int fd = open((w.src + "/" + f.rel).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) Die("open " + f.rel);
    while (read(fd, buf.data(), buf.size()) > 0) {
    }
    close(fd);
  }
}

// Batches are runs of consecutive files; workers take files in order, so a
// batch is complete when its last outstanding file is.
size_t AssignBatches(Workload& w, const Strategy& s) {
  size_t batch = 0, count = 0;
  uint64_t bytes = 0;
  for (File& f : w.files) {
    f.batch = batch;
    ++count;
    bytes += f.size;
    if ((s.batch_files && count >= s.batch_files) || (s.batch_bytes && bytes >= s.batch_bytes)) {
      ++batch;
      count = 0;
      bytes = 0;
    }
  }
  return count ? batch + 1 : batch;
}

std::atomic<bool> g_use_cfr{true};
std::atomic<int> g_cfr_fallbacks{0};

void CopyBytes(int in, int out, uint64_t size) {
  uint64_t done = 0;
  if (g_use_cfr.load(std::memory_order_relaxed)) {
    while (done < size) {
      ssize_t n = copy_file_range(in, nullptr, out, nullptr, size - done, 0);
      if (n < 0) {
        if (errno == EINTR) continue;
        if (done == 0 && (errno == ENOSYS || errno == EXDEV || errno == EOPNOTSUPP ||
                          errno == EINVAL)) {
          g_use_cfr = false;
          ++g_cfr_fallbacks;
          break;
        }
        Die("copy_file_range");
      }
      if (n == 0) break;
      done += static_cast<uint64_t>(n);
    }
    if (done == size) return;
  }
  static thread_local std::vector<char> buf(1 << 20);
  while (done < size) {
    ssize_t n = read(in, buf.data(), buf.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      Die("read");
    }
    if (n == 0) break;
    WriteAll(out, buf.data(), static_cast<size_t>(n));
    done += static_cast<uint64_t>(n);
  }
}

struct Run {
  const Workload* w;
  const Strategy* s;
  std::string dst;
  int dst_fd = -1;  // for syncfs
  std::vector<std::string> tmp;
  std::vector<size_t> batch_first, batch_end;
  std::unique_ptr<std::atomic<size_t>[]> outstanding;
  std::atomic<size_t> next{0};
};

void RenameRange(Run& r, size_t first, size_t end) {
  for (size_t i = first; i < end; ++i) {
    const std::string to = r.dst + "/" + r.w->files[i].rel;
    if (rename(r.tmp[i].c_str(), to.c_str()) != 0) Die("rename " + to);
  }
}

void Worker(Run& r) {
  const Kind kind = r.s->kind;
  const bool batched = kind == Kind::Syncfs || kind == Kind::SfrSyncfs;
  for (;;) {
    const size_t i = r.next.fetch_add(1);
    if (i >= r.w->files.size()) return;
    const File& f = r.w->files[i];
    int in = open((r.w->src + "/" + f.rel).c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) Die("open source " + f.rel);
    struct stat st;
    if (fstat(in, &st) != 0) Die("fstat");
    const size_t slash = f.rel.rfind('/');
    std::string tmpl = r.dst + "/" + (slash == std::string::npos ? "" : f.rel.substr(0, slash + 1)) +
                       ".pairwell-partial-XXXXXX";
    int out = mkostemp(&tmpl[0], O_CLOEXEC);
    if (out < 0) Die("mkostemp");
    CopyBytes(in, out, static_cast<uint64_t>(st.st_size));
    close(in);
    if (kind == Kind::SfrSyncfs && sync_file_range(out, 0, 0, SYNC_FILE_RANGE_WRITE) != 0)
      Die("sync_file_range");
    if (fchmod(out, st.st_mode & 07777) != 0) Die("fchmod");
    const struct timespec times[2] = {st.st_atim, st.st_mtim};
    if (futimens(out, times) != 0) Die("futimens");
    if (kind == Kind::Fdatasync && fdatasync(out) != 0) Die("fdatasync");
    if (close(out) != 0) Die("close");
    r.tmp[i] = tmpl;
    if (!batched) {
      RenameRange(r, i, i + 1);
      continue;
    }
    // The worker that finishes a batch commits it; the others go on copying.
    if (r.outstanding[f.batch].fetch_sub(1) == 1) {
      if (syncfs(r.dst_fd) != 0) Die("syncfs");
      RenameRange(r, r.batch_first[f.batch], r.batch_end[f.batch]);
    }
  }
}

constexpr size_t kManyFiles = 1000;
constexpr double kInodeReuseWait = 65;  // the allocator's minute, and some
double g_last_delete = 0;
int g_aside = 0;

void Remove(const std::string& path) {
  Shell("rm -rf " + Quote(path) + " && sync");
  g_last_delete = Now();
}

// A fresh start: no destination, nothing dirty, the source cached.
void Fresh(const Workload& w, const std::string& dst, const std::string& aside) {
  if (w.files.size() < kManyFiles) {
    Remove(dst);
    return;
  }
  if (access(dst.c_str(), F_OK) == 0) {
    mkdir(aside.c_str(), 0755);
    const std::string to = aside + "/" + std::to_string(++g_aside);
    if (rename(dst.c_str(), to.c_str()) != 0) Die("rename " + dst);
  }
  Shell("sync");
  const double wait = g_last_delete + kInodeReuseWait - Now();
  if (g_last_delete > 0 && wait > 0) {
    std::printf("  (waiting %.0f s until the inodes freed lately are reused at full speed)\n", wait);
    std::fflush(stdout);
    usleep(static_cast<useconds_t>(wait * 1e6));
  }
}

double TimedRun(Workload& w, const Strategy& s, int threads, const std::string& dst,
                const std::string& aside) {
  Run r;
  r.w = &w;
  r.s = &s;
  r.dst = dst;
  r.tmp.assign(w.files.size(), std::string());
  const size_t batches = AssignBatches(w, s);
  r.batch_first.assign(batches, SIZE_MAX);
  r.batch_end.assign(batches, 0);
  r.outstanding.reset(new std::atomic<size_t>[batches]);
  for (size_t b = 0; b < batches; ++b) r.outstanding[b] = 0;
  for (size_t i = 0; i < w.files.size(); ++i) {
    const size_t b = w.files[i].batch;
    r.batch_first[b] = std::min(r.batch_first[b], i);
    r.batch_end[b] = i + 1;
    ++r.outstanding[b];
  }

  Fresh(w, dst, aside);

  const double t0 = Now();
  if (mkdir(dst.c_str(), 0755) != 0) Die("mkdir " + dst);
  for (const std::string& d : w.dirs)
    if (mkdir((dst + "/" + d).c_str(), 0755) != 0) Die("mkdir " + d);
  r.dst_fd = open(dst.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (r.dst_fd < 0) Die("open " + dst);
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t) pool.emplace_back(Worker, std::ref(r));
  for (std::thread& t : pool) t.join();
  if (s.kind == Kind::Syncfs || s.kind == Kind::SfrSyncfs) {
    // The renames of the last batches are only in the journal so far.
    if (syncfs(r.dst_fd) != 0) Die("syncfs");
  } else if (s.kind == Kind::Fdatasync) {
    // The new names (and the new folders) become durable with their folders.
    for (const std::string& d : w.dirs) {
      int fd = open((dst + "/" + d).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      if (fd < 0 || fsync(fd) != 0) Die("fsync " + d);
      close(fd);
    }
    if (fsync(r.dst_fd) != 0) Die("fsync " + dst);
  }
  const double t1 = Now();
  close(r.dst_fd);
  return t1 - t0;
}

double ShellRun(const Workload& w, const std::string& cmd, const std::string& dst,
                const std::string& aside) {
  Fresh(w, dst, aside);
  const double t0 = Now();
  Shell(cmd);
  return Now() - t0;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

std::vector<std::string> Split(const std::string& s) {
  std::vector<std::string> out;
  std::stringstream in(s);
  std::string item;
  while (std::getline(in, item, ',')) out.push_back(item);
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    std::fprintf(stderr,
                 "usage: %s DIR [--runs N] [--threads 1,2,4,8] [--workloads small,large] "
                 "[--strategies none,...] [--no-reference]\n",
                 argv[0]);
    return 2;
  }
  std::string root = argv[1];
  int runs = 3;
  std::vector<int> thread_counts = {1, 2, 4, 8};
  std::vector<std::string> names = {"small", "large"};
  std::vector<std::string> only;  // strategy labels; empty: every one
  bool reference = true;
  for (int i = 2; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--runs" && i + 1 < argc) {
      runs = std::atoi(argv[++i]);
    } else if (a == "--threads" && i + 1 < argc) {
      thread_counts.clear();
      for (const std::string& t : Split(argv[++i])) thread_counts.push_back(std::atoi(t.c_str()));
    } else if (a == "--workloads" && i + 1 < argc) {
      names = Split(argv[++i]);
    } else if (a == "--strategies" && i + 1 < argc) {
      only = Split(argv[++i]);
    } else if (a == "--no-reference") {
      reference = false;
    } else {
      std::fprintf(stderr, "flush_bench: unknown argument %s\n", a.c_str());
      return 2;
    }
  }
  if (runs < 1) runs = 1;
  mkdir(root.c_str(), 0755);
  const bool have_rsync = std::system("command -v rsync >/dev/null 2>&1") == 0;

  struct Row {
    std::string workload, strategy, threads;
    double seconds;
    std::vector<double> all;
  };
  std::vector<Row> rows;
  const std::string dst = root + "/dst";
  const std::string aside = root + "/old-dst";
  Remove(dst);
  Remove(aside);  // and a deletion by whatever ran before counts as recent
  for (const std::string& name : names) {
    if (name != "small" && name != "large") {
      std::fprintf(stderr, "flush_bench: unknown workload %s\n", name.c_str());
      return 2;
    }
    Workload w = MakeWorkload(root, name);
    Warm(w);
    std::vector<Strategy> strategies = {{"none", Kind::None, 0, 0},
                                        {"fdatasync", Kind::Fdatasync, 0, 0}};
    if (name == "small") {
      for (size_t n : {256u, 1024u}) {
        strategies.push_back({"syncfs/" + std::to_string(n), Kind::Syncfs, n, 0});
        strategies.push_back({"sfr+syncfs/" + std::to_string(n), Kind::SfrSyncfs, n, 0});
      }
    } else {
      strategies.push_back({"syncfs/64MiB", Kind::Syncfs, 0, 64ull << 20});
      strategies.push_back({"sfr+syncfs/64MiB", Kind::SfrSyncfs, 0, 64ull << 20});
    }
    if (!only.empty())
      strategies.erase(std::remove_if(strategies.begin(), strategies.end(),
                                      [&](const Strategy& s) {
                                        return std::find(only.begin(), only.end(), s.label) ==
                                               only.end();
                                      }),
                       strategies.end());
    std::printf("%s: %zu files, %.1f MiB\n", name.c_str(), w.files.size(), w.bytes / 1048576.0);
    // Round after round over every case, so that a disturbance from outside
    // (another program's writeback) spreads over all of them, not one.
    const size_t first_row = rows.size();
    for (const Strategy& s : strategies)
      for (int t : thread_counts) rows.push_back({name, s.label, std::to_string(t), 0, {}});
    for (int k = 0; k < runs; ++k) {
      size_t row = first_row;
      for (const Strategy& s : strategies) {
        for (int t : thread_counts) {
          rows[row].all.push_back(TimedRun(w, s, t, dst, aside));
          std::printf("  round %d  %-18s T=%d  %.3f s\n", k + 1, s.label.c_str(), t,
                      rows[row].all.back());
          std::fflush(stdout);
          ++row;
        }
      }
    }
    for (size_t row = first_row; row < rows.size(); ++row) rows[row].seconds = Median(rows[row].all);
    if (reference) {
      std::vector<std::pair<std::string, std::string>> refs = {
          {"cp -a + sync", "cp -a " + Quote(w.src + "/.") + " " + Quote(dst + "/") + " && sync"}};
      if (have_rsync) {
        refs.push_back({"rsync -a", "rsync -a " + Quote(w.src + "/") + " " + Quote(dst + "/")});
        refs.push_back({"rsync -a + sync",
                        "rsync -a " + Quote(w.src + "/") + " " + Quote(dst + "/") + " && sync"});
      }
      for (const auto& ref : refs) {
        std::vector<double> times;
        for (int k = 0; k < runs; ++k) times.push_back(ShellRun(w, ref.second, dst, aside));
        rows.push_back({name, ref.first, "-", Median(times), times});
        std::printf("  %-18s      %.3f s\n", ref.first.c_str(), rows.back().seconds);
        std::fflush(stdout);
      }
    }
    Remove(dst);
    Remove(aside);
  }

  std::printf("\nMedian of %d runs; before each (untimed) destination moved aside, `sync`;\n"
              "source warm; the clock stops when the last flush returns. %u cores.%s\n",
              runs, std::thread::hardware_concurrency(),
              g_cfr_fallbacks ? " copy_file_range unavailable: read/write used." : "");
  std::printf("%-8s %-18s %7s %9s %10s   %s\n", "workload", "strategy", "threads", "seconds",
              "vs none/1", "runs");
  for (const Row& row : rows) {
    double base = 0;
    for (const Row& b : rows)
      if (b.workload == row.workload && b.strategy == "none" && b.threads == "1") base = b.seconds;
    std::string all;
    for (double t : row.all) {
      char buf[32];
      std::snprintf(buf, sizeof buf, "%s%.3f", all.empty() ? "" : " ", t);
      all += buf;
    }
    std::printf("%-8s %-18s %7s %9.3f %9.2fx   %s\n", row.workload.c_str(), row.strategy.c_str(),
                row.threads.c_str(), row.seconds, base > 0 ? row.seconds / base : 0.0,
                all.c_str());
  }
  return 0;
}
