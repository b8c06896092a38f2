// Makes only the system calls of a work: no tool that keeps the file safe can be faster.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

/// Small enough for the processor's cache, large enough that the number of calls does not matter.
char buffer[std::size_t{256} << 10];

template <typename Result>
Result Checked(Result result, const std::string& path) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), path);
    return result;
}

void Sync(int file, const std::string& path) {
    Checked(fsync(file), path);
}

void SyncDirectoryOf(const std::string& path) {
    const std::string directory = path.substr(0, path.rfind('/'));
    const int file = Checked(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), directory);
    Sync(file, directory);
    close(file);
}

std::size_t ReadPiece(int file, const std::string& path) {
    const ssize_t count = Checked(read(file, buffer, sizeof buffer), path);
    return static_cast<std::size_t>(count);
}

/// Reads up to the end, as given by the size, and passes each piece on.
template <typename Take>
void ReadAll(int file, off_t size, const std::string& path, Take take) {
    for (off_t left = size; left > 0;) {
        const std::size_t count = ReadPiece(file, path);
        if (count == 0) return;
        take(count);
        left -= static_cast<off_t>(count);
    }
}

void Read(const std::string& path) {
    const int file = Checked(open(path.c_str(), O_RDONLY | O_CLOEXEC), path);
    struct stat status;
    Checked(fstat(file, &status), path);
    ReadAll(file, status.st_size, path, [](std::size_t) {});
    close(file);
}

/// Replaces `to` with the bytes of `from`: writes a temporary file with its mode and renames it.
void Replace(const std::string& from, const std::string& to, bool sync) {
    const std::string temporary = to + ".tmp";
    const int in = Checked(open(from.c_str(), O_RDONLY | O_CLOEXEC), from);
    struct stat status;
    Checked(fstat(in, &status), from);
    const int out = Checked(open(temporary.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), temporary);
    ReadAll(in, status.st_size, from,
            [&](std::size_t count) { Checked(write(out, buffer, count), temporary); });
    close(in);
    Checked(fchmod(out, status.st_mode), temporary);
    if (sync) Sync(out, temporary);
    close(out);
    Checked(std::rename(temporary.c_str(), to.c_str()), to);
    if (sync) SyncDirectoryOf(to);
}

void Run(const std::vector<std::string>& arguments) {
    const std::string& work = arguments.at(0);
    if (work == "read") return Read(arguments.at(1));
    if (work == "replace") return Replace(arguments.at(1), arguments.at(2), false);
    const int count = std::stoi(arguments.at(1));
    for (int number = 0; number < count; ++number) {
        const std::string name = std::to_string(number);
        Replace(arguments.at(2) + '/' + name, arguments.at(3) + '/' + name, work == "replace-many-synced");
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::cerr << "usage: zet-bench-floor read FILE | replace FROM TO |\n"
                     "       replace-many[-synced] COUNT FROM_DIRECTORY TO_DIRECTORY\n";
        return EXIT_FAILURE;
    }
    try {
        Run({arguments + 1, arguments + count});
    } catch (const std::exception& error) {
        std::cerr << "zet-bench-floor: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
