// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// A fuzz target for one parser: it is a program of its own: linked with libFuzzer it is fed inputs that
/// reach ever more code, linked with Driver.cpp it is fed the corpus and mutations of it.
namespace parlivo::fuzz {

/// What a target defines: feeds the parser one input and checks what must hold of the outcome.
void attack(const QByteArray& input);

/// Ends the process unless `holds`: a finding like any crash.
void expect(bool holds, const char* claim);

/// A place for files, fresh for this process.
QString scratchPath(const QString& name);

void writeFile(const QString& path, const QByteArray& bytes);
/// Nothing where there is no file.
QByteArray readFile(const QString& path);

}  // namespace parlivo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count);
