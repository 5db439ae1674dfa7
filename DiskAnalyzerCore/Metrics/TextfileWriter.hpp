#pragma once

#include <expected>
#include <string>
#include <string_view>

// Puts the metrics where node_exporter's textfile collector reads them: "tarnwick.prom" in a
// folder, replaced whole. The text goes to a temporary file in the same folder whose name
// does not end in ".prom" (so the collector never reads it half-written), is flushed, and is
// renamed over the old file; a reader sees the old text or the new, never a mix. The file is
// readable by everyone, since the exporter runs as a user of its own.
namespace tarnwick::TextfileWriter {

inline constexpr std::string_view fileName = "tarnwick.prom";

struct Failure {
    enum class Case {
        missing,      // there is nothing at the folder's path
        notAFolder,   // something else than a folder is there
        notWritable,  // no permission, or a read-only file system
        noSpace,      // the disk or the user's quota is full
        writeFailed,  // any other reason of the system's
    };

    Case reason = Case::writeFailed;
    std::string folder;
    int systemError = 0; // an errno value

    // "Tarnwick couldn't write the metrics into /var/lib/x: the folder is read-only or not
    // yours to write in."
    [[nodiscard]] std::string message() const;
};

// Writes text as folder/tarnwick.prom; on failure nothing in the folder has changed (the old
// file, if any, stays whole). Returns the file's path.
std::expected<std::string, Failure> write(const std::string& folder, std::string_view text);

}
