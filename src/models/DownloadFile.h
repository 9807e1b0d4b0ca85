#pragma once

#include <QByteArrayView>
#include <QString>

namespace parlivo {

/// A file in the making, beside the place it is meant for, under a name that no other has, and claimed
/// (Claim). It goes with this object unless it was moved into its place. One thread at a time.
class DownloadFile {
  public:
    /// Touches nothing yet.
    explicit DownloadFile(QString destination);
    ~DownloadFile();
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    /// Writes all of it. Throws Error (domain "POSIX").
    void append(QByteArrayView bytes);
    /// As the file system has it, in bytes. Throws Error.
    qint64 size();
    /// Waits until the bytes are on the disk and replaces what is in the file's place. Throws Error.
    void moveIntoPlace();

    /// Deletes from a folder what programs that were killed left there.
    static void removeLeftovers(const QString& folder);

  private:
    void open();
    [[noreturn]] void fail() const;

    const QString destination_;
    const QString temporary_;
    int descriptor_ = -1;
};

}  // namespace parlivo
