// The command line of pairwell-cli, parsed.
#ifndef PAIRWELL_CLI_CLI_OPTIONS_H_
#define PAIRWELL_CLI_CLI_OPTIONS_H_

#include <string>
#include <vector>

namespace pairwell {

// Exit codes.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitConfirm = 3;
constexpr int kExitSkipped = 4;

// Whether sync draws its status line on stderr.
enum class ProgressMode {
  kAuto,  // when stderr is a terminal
  kOn,    // always (--progress)
  kOff,   // never (--quiet)
};

struct CliOptions {
  std::string ini_path;            // empty: the usual place
  // "list", "plan", "sync", "history", "undo", "help", "version"
  std::string command;
  bool json = false;               // plan, history
  bool simulate = false;           // sync, undo
  std::string run_id;              // undo: empty for the last run
  bool force = false;              // undo
  bool assume_yes = false;         // sync
  bool ignore_errors = false;      // sync
  bool all_sets = false;           // sync
  bool allow_mass_delete = false;  // sync
  // sync; of --progress and --quiet the last one given counts.
  ProgressMode progress = ProgressMode::kAuto;
  std::vector<std::string> sets;
};

// Parses the arguments after the program name. Returns "" on success, else
// what is wrong, for a usage message.
std::string ParseCliOptions(const std::vector<std::string>& args,
                            CliOptions* options);

// The text of --help.
std::string UsageText();

}  // namespace pairwell

#endif  // PAIRWELL_CLI_CLI_OPTIONS_H_
