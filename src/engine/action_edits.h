// The person's edits of a run's actions, each keeping the file's no-effect
// mark right.
#ifndef PAIRWELL_ENGINE_ACTION_EDITS_H_
#define PAIRWELL_ENGINE_ACTION_EDITS_H_

#include <cstdint>

namespace pairwell {

class SyncFile;
class Synchronizer;

// The action flags whose check boxes mean something for an action being
// chosen: the copy options when copying, the read-only delete option when
// deleting, the merge-to protection for either when the set has a merge-to
// folder.
std::uint16_t FlagsThatMatter(bool copying, bool deleting, bool has_merge_to);

// Whether some working folder of the run is a merge-to folder.
bool HasMergeToFolder(const Synchronizer& set);

// The person's edits of a file's action, each keeping the no-effect mark
// right: the action (with the newest copy as source when take_newest and
// the action copies), one flag set or cleared, the default action again,
// and the copies read again from the disk with the default action they now
// call for.
void ApplyAction(SyncFile& file, std::int32_t action, bool take_newest);
void ApplyActionFlag(SyncFile& file, std::uint16_t bit, bool set);
void ResetToDefault(SyncFile& file);
void RefreshFromDisk(SyncFile& file);

// Makes copy j the one copied over the others. The no-effect mark is left
// as it was. True when j is the file's newest copy.
bool PickSourceCopy(SyncFile& file, int j);

// The 1-based index of the first undecided file of the run; 0 when none.
long FirstUndecidedFile(const Synchronizer& set);

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_ACTION_EDITS_H_
