// pairwell-cli: the headless front end.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/cli_options.h"
#include "cli/console_user_interface.h"
#include "cli/reports.h"
#include "config/module.h"
#include "engine/sync_driver.h"
#include "engine/sync_file.h"
#include "util/text.h"

namespace pairwell {
namespace {

int UsageError(const std::string& problem) {
  std::fprintf(stderr, "pairwell-cli: %s\nTry 'pairwell-cli --help'.\n",
               problem.c_str());
  return kExitUsage;
}

// The set named (ignoring case) or numbered by `which`; null when none is.
Synchronizer* FindSet(const std::string& which) {
  SyncSetList& sets = SyncSets();
  for (int i = 1; i <= sets.Count(); ++i) {
    if (EqualsNoCase(sets.Item(i).Name, which)) return &sets.Item(i);
  }
  double number = 0;
  if (ParseNumber(which, &number) && number >= 1 && number <= sets.Count() &&
      number == static_cast<int>(number)) {
    return &sets.Item(static_cast<int>(number));
  }
  return nullptr;
}

int RunPlan(const CliOptions& options) {
  Synchronizer* set = FindSet(options.sets[0]);
  if (set == nullptr) {
    return UsageError("no sync set '" + options.sets[0] + "'");
  }
  set->DryRun = true;
  if (!set->BuildActionList()) return kExitFailed;
  for (long i = 1; i <= set->WFileCount(); ++i) set->WFile(i).CalcNoEffect();
  const std::string report = options.json ? PlanJson(*set) : PlanTable(*set);
  std::fputs(report.c_str(), stdout);
  set->FreeSyncData();
  return kExitOk;
}

// The sets named on the command line, or every set with --all; false after
// a usage message when one is unknown.
bool ResolveSets(const CliOptions& options, std::vector<Synchronizer*>* sets) {
  if (options.all_sets) {
    for (int i = 1; i <= SyncSets().Count(); ++i) {
      sets->push_back(&SyncSets().Item(i));
    }
    return true;
  }
  for (const std::string& which : options.sets) {
    Synchronizer* set = FindSet(which);
    if (set == nullptr) {
      UsageError("no sync set '" + which + "'");
      return false;
    }
    sets->push_back(set);
  }
  return true;
}

int RunSync(const CliOptions& options, const ConsoleUserInterface& ui) {
  std::vector<Synchronizer*> sets;
  if (!ResolveSets(options, &sets)) return kExitUsage;
  if (options.simulate) SetSimulationMode(true);
  std::vector<double> before;
  for (const Synchronizer* set : sets) before.push_back(set->LastSyncDate);
  const bool ok = RunSyncSets(sets, false);
  if (!SimulationMode()) {
    std::vector<const Synchronizer*> completed;
    for (std::size_t i = 0; i < sets.size(); ++i) {
      if (sets[i]->LastSyncDate != before[i]) completed.push_back(sets[i]);
    }
    if (!completed.empty() && !SaveLastSyncDates(completed)) {
      return kExitFailed;
    }
  }
  if (ui.confirmation_refused()) return kExitConfirm;
  return ok ? kExitOk : kExitFailed;
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
    setenv(kIniPathVariable, options.ini_path.c_str(), 1);
  }
  ConsoleOptions console;
  if (options.command == "sync") {
    console.assume_yes = options.assume_yes;
    console.ignore_errors = options.ignore_errors;
    console.log_stream = stdout;
    console.show_progress = true;
  }
  ConsoleUserInterface ui(console);
  if (!Main("")) return kExitUsage;
  TheLogFile().EchoTextBox = ui.LogEcho();
  if (options.command == "list") {
    std::fputs(SetListText(SyncSets()).c_str(), stdout);
    return kExitOk;
  }
  if (options.command == "sync") return RunSync(options, ui);
  return RunPlan(options);
}

}  // namespace
}  // namespace pairwell

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  pairwell::CliOptions options;
  const std::string problem = pairwell::ParseCliOptions(args, &options);
  if (!problem.empty()) return pairwell::UsageError(problem);
  return pairwell::Run(options);
}
