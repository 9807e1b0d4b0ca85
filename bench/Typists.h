// SPDX-License-Identifier: MIT
#pragma once

#include "input/Injector.h"
#include "support/Keyboard.h"
#include "support/Pipeline.h"
#include "support/TypingPlatform.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace parlivo::bench {

/// A text as applications hold it: what is typed for a line end is one key.
inline QString asReceived(QString text) {
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

/// One of the two programs that are compared.
class Typist {
  public:
    virtual ~Typist() = default;
    virtual const char* name() const = 0;
    /// Starts typing and tells whether it is over.
    virtual void start(const QString& text) = 0;
    virtual bool isDone() = 0;
};

class Parlivo : public Typist {
  public:
    Parlivo() {
        pipeline_.run([] { Platform::current().keyboard().prepare(); });
    }
    const char* name() const override { return "Parlivo"; }
    void start(const QString& text) override {
        pipeline_.start([text] { Injector::typeText(text); });
    }
    bool isDone() override { return pipeline_.isDone(); }

  private:
    desktop::TypingProgram program_;
    desktop::Pipeline pipeline_;
};

class Xdotool : public Typist {
  public:
    Xdotool() = default;
    ~Xdotool() override { releaseModifiers(); }
    Xdotool(const Xdotool&) = delete;
    Xdotool& operator=(const Xdotool&) = delete;

    const char* name() const override { return "xdotool"; }
    void start(const QString& text) override {
        QFile file(folder_.filePath(QStringLiteral("text")));
        if (!file.open(QIODevice::WriteOnly)) qFatal("no temporary file");
        file.write(asReceived(text).toUtf8());
        file.close();
        // The pace nearest to Parlivo's 285 characters a second that is not faster: about 266 of them.
        process_.start(QStringLiteral("xdotool"),
                       {QStringLiteral("type"), QStringLiteral("--clearmodifiers"), QStringLiteral("--delay"),
                        QStringLiteral("7"), QStringLiteral("--file"), file.fileName()});
        if (!process_.waitForStarted()) qFatal("xdotool does not start");
    }
    bool isDone() override { return process_.state() == QProcess::NotRunning; }

  private:
    /// It presses again the modifiers that the user has released, and leaves them down.
    static void releaseModifiers() {
        desktop::Keyboard keyboard(desktop::Keyboard::Device::Synthetic);
        using namespace desktop::Key;
        for (const auto key : {leftAlt, leftControl, leftShift, leftSuper}) keyboard.tap(key);
    }

    QTemporaryDir folder_;
    QProcess process_;
};

}  // namespace parlivo::bench
