// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/PipeWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace parlivo::gnome {

PipeWriter::PipeWriter(UniqueFd pipe, QByteArray bytes, QObject* parent)
    : QObject(parent),
      pipe_(std::move(pipe)),
      bytes_(std::move(bytes)),
      notifier_(pipe_.get(), QSocketNotifier::Write) {
    fcntl(pipe_.get(), F_SETFL, fcntl(pipe_.get(), F_GETFL) | O_NONBLOCK);
    connect(&notifier_, &QSocketNotifier::activated, this, &PipeWriter::write);
}

void PipeWriter::write() {
    while (written_ < bytes_.size()) {
        const ssize_t count = ::write(pipe_.get(), bytes_.constData() + written_,
                                      static_cast<size_t>(bytes_.size() - written_));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) return;
        if (count < 0) break;
        written_ += count;
    }
    notifier_.setEnabled(false);
    pipe_.reset();
    Q_EMIT finished(written_ == bytes_.size());
}

}  // namespace parlivo::gnome
