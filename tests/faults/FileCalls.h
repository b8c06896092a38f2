#ifndef ZET_FAULTS_FILE_CALLS_H
#define ZET_FAULTS_FILE_CALLS_H

namespace ZET::Faults {

/// One system call as the kernel gets it.
struct Call {
    long long number;
    long long arguments[6];
};

/// Whether the call is about a file, a directory, a descriptor or the memory that libraries are mapped to.
/// What is written to standard error is not: it has to tell of the fault.
bool IsFileCall(const Call& call);

/// The path that the call names (of two, the first); null when it names none.
const char* PathOf(const Call& call);

/// Whether the first argument is a descriptor.
bool TakesDescriptor(const Call& call);

/// 0 for all but an open.
int OpenFlags(const Call& call);

/// Whether the call makes a new name; an open, if there is none.
bool CreatesFile(const Call& call);

/// Whether the call takes room for bytes or attributes.
bool WritesFile(const Call& call);

/// Whether names, owners, modes or bytes may be others after the call.
bool MayChangeFiles(const Call& call);

/// Whether the call may do a part of what it was asked for.
bool CanBeShort(const Call& call);

/// The call, asked for less.
Call Shortened(const Call& call);

}  // namespace ZET::Faults

#endif
