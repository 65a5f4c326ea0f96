// The command line's reports: the list of sets and a set's plan, as text
// tables or JSON.
#ifndef PAIRWELL_CLI_REPORTS_H_
#define PAIRWELL_CLI_REPORTS_H_

#include <string>
#include <vector>

#include "engine/run_history.h"

namespace pairwell {

class OutputBuffer;
class SyncSetList;
class Synchronizer;

// One line per set (number, name, folder count), then one line per folder
// with its type and flags.
std::string SetListText(const SyncSetList& sets);

// The run's files as a table with the columns File, Status and Action, then
// the statistics line and the warnings. The action list must have been
// built. Written as it goes: the report is never held whole.
void PlanTable(const Synchronizer& set, OutputBuffer& out);

// The run as one JSON object (set, lastSync, folders, files, stats,
// warnings) and a line break, written as it goes.
void PlanJson(const Synchronizer& set, OutputBuffer& out);

// The runs, newest first, a line each: "20261125-043012  2026-11-25
// 04:30:12  sync  3 created, 2 replaced, 1 deleted".
std::string HistoryText(const std::vector<RunSummary>& runs);

// The same as one JSON object (set, runs) and a line break.
void HistoryJson(const std::string& set_name,
                 const std::vector<RunSummary>& runs, OutputBuffer& out);

}  // namespace pairwell

#endif  // PAIRWELL_CLI_REPORTS_H_
