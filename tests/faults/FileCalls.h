#ifndef ZET_FAULTS_FILE_CALLS_H
#define ZET_FAULTS_FILE_CALLS_H

namespace ZET::Faults {

/// One system call as the kernel receives it.
struct Call {
    long long number;
    long long arguments[6];
};

/// Whether the call concerns a file, a directory, a descriptor or a mapping of a library. Output to standard
/// error does not count, since it reports the fault.
bool IsFileCall(const Call& call);

/// The path that the call names (of two, the first); null if it names none.
const char* PathOf(const Call& call);

/// Whether the first argument is a descriptor.
bool TakesDescriptor(const Call& call);

/// The flags of an open; 0 for any other call.
int OpenFlags(const Call& call);

/// Whether the call creates a new name; for an open, if the file does not exist.
bool CreatesFile(const Call& call);

/// Whether the call needs room for bytes or attributes.
bool WritesFile(const Call& call);

/// Whether the call may change names, owners, modes or bytes.
bool MayChangeFiles(const Call& call);

/// Whether the call may do only part of its work.
bool CanBeShort(const Call& call);

/// The call with a smaller size.
Call Shortened(const Call& call);

}  // namespace ZET::Faults

#endif
