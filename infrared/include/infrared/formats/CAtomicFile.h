// Replaces a file so that a crash or a power cut at any moment leaves either the old content or
// the new one, never a mixture: a temporary file beside it, written, fsync'ed, renamed over it,
// then the directory fsync'ed so the rename itself is on disk. A replaced file keeps its
// permissions (a new one gets 0644). Any thread; throws nothing.
#pragma once

#include <functional>
#include <string>

namespace infrared {

class CAtomicFile {
public:
    // The points Write() passes; a hook sees each one after it is done (tests stop the process there).
    enum class Step { Created, HalfWritten, Written, Synced, Renamed, DirectorySynced };
    using Hook = std::function<void(Step)>;

    // False with a one-line reason naming the file; the temporary file is removed on failure.
    static bool Write(const std::string& path, const std::string& content, std::string& error,
                      const Hook& hook = Hook());
    // The whole file; false if it cannot be read (`missing` tells a file that is not there).
    static bool Read(const std::string& path, std::string& content, bool* missing = nullptr);
};

}  // namespace infrared
