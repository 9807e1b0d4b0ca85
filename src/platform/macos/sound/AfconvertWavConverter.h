// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WavConverter.h"

namespace parlivo {

/// The system's own converter, run as a program. It takes only whole files.
class AfconvertWavConverter : public WavConverter {
  public:
    explicit AfconvertWavConverter(QString tool = QStringLiteral("/usr/bin/afconvert"))
        : tool_(std::move(tool)) {}

    void convert(const QString& source, const QString& destination) override;

  private:
    const QString tool_;
};

}  // namespace parlivo
