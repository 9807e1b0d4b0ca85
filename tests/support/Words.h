// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QTranslator>

#include <map>
#include <utility>

namespace parlivo {

/// A catalogue of texts that is in force while it lives: what the program says in place of its own words.
class Words : public QTranslator {
  public:
    explicit Words(std::map<QByteArray, QString> words) : words_(std::move(words)) {
        QCoreApplication::installTranslator(this);
    }
    ~Words() override { QCoreApplication::removeTranslator(this); }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;

    QString translate(const char*, const char* source, const char*, int) const override {
        const auto found = words_.find(source);
        return found == words_.end() ? QString() : found->second;
    }
    bool isEmpty() const override { return false; }

  private:
    const std::map<QByteArray, QString> words_;
};

}  // namespace parlivo
