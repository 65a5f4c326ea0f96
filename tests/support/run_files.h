// Reaching a scanned set's files from a test.
#ifndef PAIRWELL_TESTS_SUPPORT_RUN_FILES_H_
#define PAIRWELL_TESTS_SUPPORT_RUN_FILES_H_

#include <string>
#include <vector>

namespace pairwell {

class Program;
class RecordingUserInterface;
class SyncFile;
class Synchronizer;

// Builds the set's action list; fails the test when the scan refuses or
// anything was said to the person.
void BuildSilently(Synchronizer& set, const RecordingUserInterface& ui);

// The run's file of that relative name; fails the test (and throws
// std::runtime_error) when the run has none.
SyncFile& FileNamed(Synchronizer& set, const std::string& relative_name);

// Runs the sets through the sync driver without writing last-sync dates
// into a configuration file; true when every set completed.
bool RunSets(Program& program, const std::vector<Synchronizer*>& sets,
             bool interactive = false);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_RUN_FILES_H_
