#include "cli/cli_options.h"

namespace pairwell {

namespace {

std::string ParseCommandArgs(const std::vector<std::string>& args,
                             std::size_t i, CliOptions* options) {
  for (; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool plan = options->command == "plan";
    const bool sync = options->command == "sync";
    const bool history = options->command == "history";
    const bool undo = options->command == "undo";
    if (arg == "--json" && (plan || history)) {
      options->json = true;
    } else if (arg == "--run" && undo) {
      if (i + 1 >= args.size() || args[i + 1].empty()) {
        return "--run needs a run id";
      }
      options->run_id = args[++i];
    } else if (arg.compare(0, 6, "--run=") == 0 && undo) {
      options->run_id = arg.substr(6);
      if (options->run_id.empty()) return "--run needs a run id";
    } else if (arg == "--force" && undo) {
      options->force = true;
    } else if (arg == "--simulate" && (sync || undo)) {
      options->simulate = true;
    } else if (arg == "--yes" && sync) {
      options->assume_yes = true;
    } else if (arg == "--ignore-errors" && sync) {
      options->ignore_errors = true;
    } else if (arg == "--allow-mass-delete" && sync) {
      options->allow_mass_delete = true;
    } else if (arg == "--all" && sync) {
      options->all_sets = true;
    } else if (arg == "--progress" && sync) {
      options->progress = ProgressMode::kOn;
    } else if (arg == "--quiet" && sync) {
      options->progress = ProgressMode::kOff;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return "unknown option '" + arg + "' for " + options->command;
    } else {
      options->sets.push_back(arg);
    }
  }
  if (options->command == "list" && !options->sets.empty()) {
    return "list takes no set";
  }
  for (const char* one_set : {"plan", "history", "undo"}) {
    if (options->command == one_set && options->sets.size() != 1) {
      return std::string(one_set) + " takes exactly one set";
    }
  }
  if (options->command == "sync" &&
      options->all_sets == !options->sets.empty()) {
    return "sync takes one or more sets, or --all";
  }
  return std::string();
}

}  // namespace

std::string ParseCliOptions(const std::vector<std::string>& args,
                            CliOptions* options) {
  std::size_t i = 0;
  for (; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--help" || arg == "-h") {
      options->command = "help";
      return std::string();
    }
    if (arg == "--version") {
      options->command = "version";
      return std::string();
    }
    if (arg == "--ini") {
      if (i + 1 >= args.size()) return "--ini needs a file";
      options->ini_path = args[++i];
    } else if (arg.compare(0, 6, "--ini=") == 0) {
      options->ini_path = arg.substr(6);
    } else if (!arg.empty() && arg[0] == '-') {
      return "unknown option '" + arg + "'";
    } else {
      break;
    }
  }
  if (i >= args.size()) return "no command given";
  options->command = args[i];
  if (options->command != "list" && options->command != "plan" &&
      options->command != "sync" && options->command != "history" &&
      options->command != "undo") {
    return "unknown command '" + options->command + "'";
  }
  return ParseCommandArgs(args, i + 1, options);
}

std::string UsageText() {
  return "Usage: pairwell-cli [--ini FILE] COMMAND [ARGUMENTS]\n"
         "\n"
         "Commands:\n"
         "  list                 list the sync sets and their folders\n"
         "  plan [--json] SET    scan SET's folders and show what a sync "
         "would do;\n"
         "                       changes nothing\n"
         "  sync [--simulate] [--yes] [--ignore-errors] [--allow-mass-delete]\n"
         "       [--progress | --quiet] (SET... | --all)\n"
         "                       synchronize the sets, one after another\n"
         "  history [--json] SET the runs of SET that can be undone, newest "
         "first\n"
         "  undo [--run ID] [--simulate] [--force] SET\n"
         "                       put SET's last run (or run ID) back as it "
         "was\n"
         "\n"
         "sync options:\n"
         "  --simulate       log every operation, change no file\n"
         "  --yes            answer Yes to questions and accept the default\n"
         "                   actions of conflicts that need confirmation\n"
         "  --ignore-errors  skip a failed copy or deletion and go on "
         "(else abort)\n"
         "  --allow-mass-delete\n"
         "                   go on when a set would delete more than half of "
         "the\n"
         "                   files of a folder (10 or more); without it such "
         "a set\n"
         "                   changes nothing (--yes does not allow it)\n"
         "  --all            every set, in list order\n"
         "  --progress       show the progress line on stderr even when it is "
         "not a\n"
         "                   terminal (where it is, the line is shown anyway):"
         " files\n"
         "                   and bytes copied of the set's total, and the "
         "current file\n"
         "  --quiet          show no progress line; of --progress and --quiet"
         " the\n"
         "                   last one given counts\n"
         "\n"
         "undo options:\n"
         "  --run ID         the run to put back (see history); default the "
         "last\n"
         "  --simulate       log what would be put back, change no file\n"
         "  --force          put back also the files changed since the run, "
         "keeping\n"
         "                   their present content as a version\n"
         "\n"
         "SET is a set's name (case is ignored) or its number in the list.\n"
         "\n"
         "Options:\n"
         "  --ini FILE   the configuration file (default: $PAIRWELL_INI, "
         "else\n"
         "               Pairwell.ini beside the program)\n"
         "  --help       show this help\n"
         "  --version    show the version\n"
         "\n"
         "Exit codes: 0 done; 1 a scan refused, a set failed or was "
         "aborted;\n"
         "2 usage or configuration error; 3 a conflict needs confirmation "
         "(sync\n"
         "without --yes) or a mass deletion was not allowed (sync without\n"
         "--allow-mass-delete): nothing was changed; 4 done, but operations "
         "failed\n"
         "and were skipped (--ignore-errors, or the ErrorHandling table) or "
         "their\n"
         "files changed during the run: the log names them. For undo, 4: files\n"
         "changed since the run were left as they are (listed).\n"
         "\n"
         "plan --json writes a name byte that is not UTF-8 as \\udc80..\\udcff "
         "(U+DC00\n"
         "plus the byte), so the exact bytes can be restored.\n";
}

}  // namespace pairwell
