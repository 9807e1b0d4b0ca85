// SPDX-License-Identifier: MIT
#include "platform/linux/base/ZipExtraction.h"

#include "support/Clock.h"

#include <QFile>
#include <QFileInfo>

#include <archive.h>
#include <archive_entry.h>

#include <clocale>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace parlivo {

namespace {

using Reader = std::unique_ptr<archive, decltype(&archive_read_free)>;
using Writer = std::unique_ptr<archive, decltype(&archive_write_free)>;

/// libarchive converts names to the character set of the thread's locale, and refuses those that it lacks.
class Utf8Locale {
  public:
    Utf8Locale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t())) {
        if (locale_ != locale_t()) before_ = uselocale(locale_);
    }
    ~Utf8Locale() {
        if (locale_ == locale_t()) return;
        uselocale(before_);
        freelocale(locale_);
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    locale_t locale_;
    locale_t before_{};
};

Reader openZip(const QString& file) {
    Reader reader(archive_read_new(), archive_read_free);
    // Only by the central directory: a file in which none can be found is damaged, and is not searched for
    // entries.
    const bool opened = reader && archive_read_support_format_zip_seekable(reader.get()) == ARCHIVE_OK &&
                        archive_read_open_filename(reader.get(), QFile::encodeName(file).constData(),
                                                   std::size_t{1} << 16) == ARCHIVE_OK;
    if (!opened) reader.reset();
    return reader;
}

Writer makeWriter() {
    Writer writer(archive_write_disk_new(), archive_write_free);
    // Absolute names are refused by placeBelow(), because those given to the writer must be absolute: the
    // working directory belongs to the whole process.
    constexpr int flags = ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT |
                          ARCHIVE_EXTRACT_NO_OVERWRITE | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME;
    if (writer && archive_write_disk_set_options(writer.get(), flags) != ARCHIVE_OK) writer.reset();
    return writer;
}

/// False for names that are empty, absolute, or lead upwards at any point.
bool placeBelow(const std::string& folder, archive_entry* entry) {
    const char* const name = archive_entry_pathname(entry);
    if (name == nullptr || *name == '\0' || *name == '/') return false;
    const std::string path = folder + '/' + name;
    archive_entry_copy_pathname(entry, path.c_str());
    return true;
}

/// False for kinds of files that no bundle has.
bool setPlainMode(archive_entry* entry) {
    if (archive_entry_hardlink(entry) != nullptr) return false;
    switch (archive_entry_filetype(entry)) {
        case AE_IFDIR:
            archive_entry_set_perm(entry, 0755);
            return true;
        case AE_IFREG:
            archive_entry_set_perm(entry, (archive_entry_perm(entry) & 0111U) != 0 ? 0755 : 0644);
            return true;
        case AE_IFLNK:
            return archive_entry_symlink(entry) != nullptr;
        default:
            return false;
    }
}

class Extraction {
  public:
    Extraction(archive* reader, archive* writer, std::string folder, qint64 maximumSize)
        : reader_(reader), writer_(writer), folder_(std::move(folder)), room_(maximumSize) {}

    bool run() {
        archive_entry* entry = nullptr;
        int status = ARCHIVE_OK;
        while ((status = archive_read_next_header(reader_, &entry)) == ARCHIVE_OK) {
            if (!setPlainMode(entry) || !placeBelow(folder_, entry) || !extract(entry)) return false;
        }
        return status == ARCHIVE_EOF && archive_write_close(writer_) == ARCHIVE_OK;
    }

  private:
    bool extract(archive_entry* entry) {
        // A file is given its stated size even if less is written.
        const la_int64_t size = archive_entry_size(entry);
        return size >= 0 && size <= room_ && archive_write_header(writer_, entry) == ARCHIVE_OK &&
               copyContent() && archive_write_finish_entry(writer_) == ARCHIVE_OK;
    }

    bool copyContent() {
        const void* bytes = nullptr;
        std::size_t count = 0;
        la_int64_t offset = 0;
        int status = ARCHIVE_OK;
        while ((status = archive_read_data_block(reader_, &bytes, &count, &offset)) == ARCHIVE_OK) {
            room_ -= static_cast<qint64>(count);
            if (room_ < 0 || Clock::interrupted()) return false;
            if (archive_write_data_block(writer_, bytes, count, offset) < ARCHIVE_OK) return false;
        }
        return status == ARCHIVE_EOF;
    }

    archive* const reader_;
    archive* const writer_;
    const std::string folder_;
    qint64 room_;  // bytes that may still be written
};

}  // namespace

bool extractZip(const QString& archive, const QString& folder, qint64 maximumSize) {
    const Utf8Locale locale;
    const Reader reader = openZip(archive);
    const Writer writer = makeWriter();
    // The path is checked for symbolic links as a whole.
    const QString place = QFileInfo(folder).canonicalFilePath();
    if (!reader || !writer || place.isEmpty()) return false;
    return Extraction(reader.get(), writer.get(), QFile::encodeName(place).toStdString(), maximumSize).run();
}

}  // namespace parlivo
