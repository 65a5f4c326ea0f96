// pairwell-cli: the headless front end.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/program.h"
#include "app/sync_driver.h"
#include "app/sync_plan.h"
#include "app/undo_driver.h"
#include "cli/cli_options.h"
#include "cli/console_user_interface.h"
#include "cli/output_buffer.h"
#include "cli/reports.h"
#include "engine/run_undo.h"
#include "util/system.h"
#include "util/terminal.h"

namespace pairwell {
namespace {

int UsageError(const std::string& problem) {
  std::fprintf(stderr, "pairwell-cli: %s\nTry 'pairwell-cli --help'.\n",
               problem.c_str());
  return kExitUsage;
}

int RunPlan(Program& program, const CliOptions& options) {
  Synchronizer* set = program.FindSyncSet(options.sets[0]);
  if (set == nullptr) {
    return UsageError("no sync set '" + options.sets[0] + "'");
  }
  const SyncPlan plan(*set);
  if (!plan.ok()) return kExitFailed;
  OutputBuffer out(stdout);
  if (options.json) {
    PlanJson(*set, out);
  } else {
    PlanTable(*set, out);
  }
  if (!out.Flush()) {
    std::fprintf(stderr, "pairwell-cli: the plan could not be written: %s\n",
                 ErrorText(out.error_number()).c_str());
    return kExitFailed;
  }
  return kExitOk;
}

// The sets named on the command line, or every set with --all; false after
// a usage message when one is unknown.
bool ResolveSets(Program& program, const CliOptions& options,
                 std::vector<Synchronizer*>* sets) {
  if (options.all_sets) {
    for (int i = 1; i <= program.SyncSets().Count(); ++i) {
      sets->push_back(&program.SyncSets().Item(i));
    }
    return true;
  }
  for (const std::string& which : options.sets) {
    Synchronizer* set = program.FindSyncSet(which);
    if (set == nullptr) {
      UsageError("no sync set '" + which + "'");
      return false;
    }
    sets->push_back(set);
  }
  return true;
}

// PAIRWELL_COPY_THREADS, when set, chooses how many threads write copies
// (for measuring; the default suits most disks). False, after saying why,
// when it is no count from 1 to 64.
bool CopyThreadsFromEnvironment(int* threads) {
  const std::string given = EnvironmentValue("PAIRWELL_COPY_THREADS");
  if (given.empty()) return true;
  char* end = nullptr;
  const long count = std::strtol(given.c_str(), &end, 10);
  if (*end != '\0' || count < 1 || count > 64) {
    UsageError("PAIRWELL_COPY_THREADS must be a number from 1 to 64, not '" +
               given + "'");
    return false;
  }
  *threads = static_cast<int>(count);
  return true;
}

int RunSync(Program& program, const CliOptions& options) {
  std::vector<Synchronizer*> sets;
  if (!ResolveSets(program, options, &sets)) return kExitUsage;
  if (options.simulate) program.SetSimulationMode(true);
  RunOptions run;
  run.mass_deletion =
      options.allow_mass_delete ? MassDeletion::kAllow : MassDeletion::kRefuse;
  if (!CopyThreadsFromEnvironment(&run.copy_threads)) return kExitUsage;
  const RunResult result = RunSyncSets(program, sets, run);
  if (!result.dates_saved) return kExitFailed;
  if (result.Any(SetOutcome::kConfirmationRefused)) return kExitConfirm;
  if (result.Any(SetOutcome::kMassDeletionRefused)) {
    std::fputs(
        "pairwell-cli: run again with --allow-mass-delete to delete them.\n",
        stderr);
    return kExitConfirm;
  }
  if (!result.AllCompleted()) return kExitFailed;
  return result.skipped_operations > 0 ? kExitSkipped : kExitOk;
}

int RunHistory(Program& program, const CliOptions& options) {
  Synchronizer* set = program.FindSyncSet(options.sets[0]);
  if (set == nullptr) {
    return UsageError("no sync set '" + options.sets[0] + "'");
  }
  const std::vector<RunSummary> runs = RunUndo(*set).Runs();
  OutputBuffer out(stdout);
  if (options.json) {
    HistoryJson(set->Name, runs, out);
  } else {
    out.Append(HistoryText(runs));
  }
  if (!out.Flush()) {
    std::fprintf(stderr, "pairwell-cli: the history could not be written: %s\n",
                 ErrorText(out.error_number()).c_str());
    return kExitFailed;
  }
  return kExitOk;
}

int RunUndoCommand(Program& program, const CliOptions& options) {
  Synchronizer* set = program.FindSyncSet(options.sets[0]);
  if (set == nullptr) {
    return UsageError("no sync set '" + options.sets[0] + "'");
  }
  RunUndo undo(*set);
  const std::string problem = undo.Load(options.run_id);
  if (!problem.empty()) {
    std::fprintf(stderr, "pairwell-cli: %s\n", problem.c_str());
    return kExitFailed;
  }
  UndoOptions undo_options;
  undo_options.force = options.force;
  undo_options.simulate = options.simulate;
  const UndoResult result = PerformUndo(program, undo, undo_options);
  if (!result.problem.empty()) {
    std::fprintf(stderr, "pairwell-cli: %s\n", result.problem.c_str());
    return kExitFailed;
  }
  if (!result.completed) return kExitFailed;
  if (result.left > 0) {
    std::fprintf(stderr,
                 "pairwell-cli: %ld %s left as %s: the log says why (--force "
                 "puts back files changed since the run too).\n",
                 result.left, result.left == 1 ? "file was" : "files were",
                 result.left == 1 ? "it was" : "they were");
    return kExitSkipped;
  }
  return kExitOk;
}

int Run(const CliOptions& options) {
  if (options.command == "help") {
    std::fputs(UsageText().c_str(), stdout);
    return kExitOk;
  }
  if (options.command == "version") {
    std::printf("pairwell-cli %s\n", PAIRWELL_VERSION);
    return kExitOk;
  }
  if (!options.ini_path.empty()) {
    SetEnvironmentValue(kIniPathVariable, options.ini_path);
  }
  ConsoleOptions console;
  if (options.command == "sync" || options.command == "undo") {
    console.assume_yes = options.assume_yes;
    console.ignore_errors = options.ignore_errors;
    console.log_stream = stdout;
    console.show_progress =
        options.progress == ProgressMode::kOn ||
        (options.progress == ProgressMode::kAuto && IsTerminal(stderr));
  }
  ConsoleUserInterface ui(console);
  Program program(ui);
  if (!program.Main("")) return kExitUsage;
  program.TheLogFile().EchoTextBox = ui.LogEcho();
  ui.WatchRun(&program.Run());
  if (options.command == "list") {
    std::fputs(SetListText(program.SyncSets()).c_str(), stdout);
    return kExitOk;
  }
  if (options.command == "sync") return RunSync(program, options);
  if (options.command == "history") return RunHistory(program, options);
  if (options.command == "undo") return RunUndoCommand(program, options);
  return RunPlan(program, options);
}

}  // namespace
}  // namespace pairwell

int main(int argc, char** argv) {
  pairwell::UseUtf8Console();
  const std::vector<std::string> args = pairwell::ProgramArguments(argc, argv);
  pairwell::CliOptions options;
  const std::string problem = pairwell::ParseCliOptions(args, &options);
  if (!problem.empty()) return pairwell::UsageError(problem);
  return pairwell::Run(options);
}
