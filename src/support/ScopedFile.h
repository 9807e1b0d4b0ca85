#pragma once

#include <QFile>
#include <QString>

#include <utility>

namespace parlivo {

/// A file that is deleted when nobody needs it any more, however that comes about. Errors of the deletion are
/// ignored.
class ScopedFile {
  public:
    explicit ScopedFile(QString path) : path_(std::move(path)) {}
    ~ScopedFile() { remove(); }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    const QString& path() const { return path_; }
    void remove() const { QFile::remove(path_); }

  private:
    const QString path_;
};

}  // namespace parlivo
