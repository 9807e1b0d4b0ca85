// SPDX-License-Identifier: MIT
#pragma once

#include <QFileDevice>
#include <QString>

#include <exception>

namespace parlivo {

/// Codes of the program's own failures. They appear in no text that a user sees; tests and callers compare
/// them.
enum class ErrorCode {
    MicrophoneUnavailable = 1,
    ConversionFailed = 2,
    WhisperNotResponding = 3,
    WhisperReplyInvalid = 4,
    IncompleteDownload = 10,
    UpdateCorrupted = 20,
    UpdateExtractionFailed = 21,
    UpdateBundleInvalid = 22,
    UpdateReplacementFailed = 23,
};

/// The one exception type. Its description is Italian and fit for the status line.
class Error : public std::exception {
  public:
    /// A failure of the program's own domain, "Parlivo".
    Error(ErrorCode code, QString description);
    /// A failure of another domain, passed up unchanged.
    Error(QString domain, int code, QString description);

    /// A failed system call: domain "POSIX", the errno value and what it means to the user, preceded by
    /// `subject`.
    static Error system(int errnoValue, const QString& subject);

    /// A failed operation of a file: domain "File", Qt's code for it and what it means to the user, preceded
    /// by the file's name.
    static Error file(const QFileDevice& file);

    /// What an errno value means to the user, in Italian.
    static QString meaning(int errnoValue);

    const QString& domain() const { return domain_; }
    int code() const { return code_; }
    const QString& localizedDescription() const { return description_; }
    /// What a library said of it in its own words and language: for the log, not for the user. Empty if it
    /// said nothing more.
    const QString& detail() const { return detail_; }
    /// The same error with such a detail.
    Error withDetail(const QString& detail) const;
    /// The description in UTF-8.
    const char* what() const noexcept override { return utf8_.constData(); }

    static const QString& programDomain();

  private:
    QString domain_;
    int code_;
    QString description_;
    QString detail_;
    QByteArray utf8_;
};

}  // namespace parlivo
