// pairwell-cli: the headless front end.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/cli_options.h"
#include "cli/console_user_interface.h"
#include "cli/reports.h"
#include "config/module.h"
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
  ConsoleUserInterface ui(console);
  if (!Main("")) return kExitUsage;
  TheLogFile().EchoTextBox = ui.LogEcho();
  if (options.command == "list") {
    std::fputs(SetListText(SyncSets()).c_str(), stdout);
    return kExitOk;
  }
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
