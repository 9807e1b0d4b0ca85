// SPDX-License-Identifier: MIT

// usage: receiver_qt TITLE FILE
// A window with a menu bar and a text field, whose text is kept in FILE; FILE is made when the field has the
// focus. Ctrl+L empties the field without selecting anything.

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QShortcut>
#include <QTimer>

#include <chrono>

namespace {

void write(const QString& path, const QString& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(text.toUtf8());
    file.commit();
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) qFatal("usage: receiver_qt TITLE FILE");

    QMainWindow window;
    window.setWindowTitle(arguments.at(1));
    window.resize(600, 300);
    window.menuBar()->addMenu(QStringLiteral("&File"))->addAction(QStringLiteral("&Open"));
    auto* const field = new QPlainTextEdit(&window);
    window.setCentralWidget(field);
    QObject::connect(new QShortcut(Qt::CTRL | Qt::Key_L, field), &QShortcut::activated, field,
                     &QPlainTextEdit::clear);
    window.show();
    field->setFocus();

    bool changed = false;
    bool ready = false;
    QObject::connect(field, &QPlainTextEdit::textChanged, field, [&] { changed = true; });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, field, [&] {
        const bool becameReady = !ready && field->hasFocus();
        ready = ready || becameReady;
        if (!becameReady && !(ready && changed)) return;
        changed = false;
        write(arguments.at(2), field->toPlainText());
    });
    timer.start(std::chrono::milliseconds(40));
    return QApplication::exec();
}
