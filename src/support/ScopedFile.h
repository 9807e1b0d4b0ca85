#pragma once

#include "support/Claim.h"

#include <QFile>
#include <QString>

#include <optional>
#include <utility>

namespace parlivo {

/// A temporary file that is deleted when nobody needs it any more, however that comes about, and is claimed
/// until then. Errors of the deletion are ignored.
class ScopedFile {
  public:
    /// Claims the file if it is there.
    explicit ScopedFile(QString path) : path_(std::move(path)) { claim(); }
    ~ScopedFile() { remove(); }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    const QString& path() const { return path_; }
    /// Claims a file that was made since.
    void claim() { claim_ = Claim::on(path_); }
    void remove() {
        QFile::remove(path_);
        // The system keeps the contents as long as somebody has the file open.
        claim_.reset();
    }

  private:
    const QString path_;
    std::optional<Claim> claim_;
};

}  // namespace parlivo
