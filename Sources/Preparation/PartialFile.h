#pragma once

#include "Preparation/Media.h"

#include <QUrl>

#include <expected>

namespace velmora {

/// The file that ffmpeg writes: the prepared file's name with ".part" appended, in the same folder, so that
/// the finished one only changes its name. It goes with this object unless it was moved into place.
class PartialFile {
  public:
    /// Removes what a run that crashed has left.
    explicit PartialFile(const QUrl& prepared);
    ~PartialFile() { remove(); }
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    [[nodiscard]] const QUrl& url() const { return url_; }

    /// A failure is ignored: ffmpeg overwrites what is left.
    void remove() const;

    /// Gives the file its final name, in place of an older prepared file.
    [[nodiscard]] std::expected<void, PrepareError> moveTo(const QUrl& prepared);

  private:
    QUrl url_;  ///< empty once moved
};

}  // namespace velmora
