// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QCryptographicHash>

#include <algorithm>
#include <memory>
#include <vector>

namespace parlivo {

/// What a file's bytes are to hash to, computed while they come. One thread at a time.
class Checksums {
  public:
    /// Before the first bytes. `digits` are hexadecimal.
    void expect(QCryptographicHash::Algorithm algorithm, const QByteArray& digits) {
        expected_.push_back({std::make_unique<QCryptographicHash>(algorithm), digits.toLower()});
    }

    void add(QByteArrayView bytes) {
        for (const auto& [hash, digits] : expected_) hash->addData(bytes);
    }

    /// Whether the bytes so far hash to all that was expected.
    bool match() const {
        return std::ranges::all_of(expected_,
                                   [](const auto& one) { return one.hash->result().toHex() == one.digits; });
    }

  private:
    struct Expected {
        std::unique_ptr<QCryptographicHash> hash;
        QByteArray digits;
    };
    std::vector<Expected> expected_;
};

}  // namespace parlivo
