// SPDX-License-Identifier: MIT

// Feeds a target its corpus and mutations of it, where there is no libFuzzer:
//
//   TARGET FOLDER_OR_FILE [ROUNDS [SEED]]
//
// The inputs are tried in a child process; what ends that is kept in a file, which is named. The same seed
// makes the same mutations.

#include "FuzzTarget.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace parlivo::fuzz {

namespace {

using Corpus = std::vector<QByteArray>;

constexpr std::size_t longestInput = 64 << 10;

/// The input that is being tried, where the parent sees it when the child is no more.
struct Attempt {
    std::size_t count;
    std::array<char, longestInput> bytes;

    static Attempt& shared() {
        void* memory =
            mmap(nullptr, sizeof(Attempt), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        expect(memory != MAP_FAILED, "there is memory");
        return *static_cast<Attempt*>(memory);
    }
    void make(const QByteArray& input) {
        count = static_cast<std::size_t>(input.size());
        std::copy_n(input.constData(), count, bytes.data());
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), count);
    }
    QByteArray input() const { return {bytes.data(), static_cast<qsizetype>(count)}; }
};

class Mutator {
  public:
    Mutator(const Corpus& corpus, unsigned seed) : corpus_(corpus), random_(seed) {}

    QByteArray next() {
        QByteArray bytes = anyInput();
        for (qsizetype steps = 1 + below(6); steps > 0; --steps) change(bytes);
        bytes.truncate(longestInput);
        return bytes;
    }

  private:
    qsizetype below(qsizetype limit) {
        return static_cast<qsizetype>(random_() % static_cast<unsigned>(limit));
    }
    qsizetype placeIn(const QByteArray& bytes) { return below(bytes.size() + 1); }
    const QByteArray& anyInput() { return corpus_[static_cast<std::size_t>(below(std::ssize(corpus_)))]; }
    QByteArray pieceOf(const QByteArray& bytes) { return bytes.mid(placeIn(bytes), 1 + below(32)); }
    char anyByte() { return static_cast<char>(random_()); }

    void change(QByteArray& bytes) {
        const qsizetype place = placeIn(bytes);
        switch (below(7)) {
            case 0:
                bytes.replace(place, 1, QByteArray(1, anyByte()));
                break;
            case 1:
                bytes.remove(place, 1 + below(16));
                break;
            case 2:
                bytes.insert(place, pieceOf(bytes));
                break;
            case 3:
                bytes.insert(place, pieceOf(anyInput()));
                break;
            case 4:
                bytes = bytes.left(place) + pieceOf(anyInput());
                break;
            case 5:
                bytes.insert(place, QByteArray(1 + below(64), anyByte()));
                break;
            default:
                if (place < bytes.size()) bytes[place] = static_cast<char>(bytes[place] ^ (1 << below(8)));
        }
    }

    const Corpus& corpus_;
    std::mt19937 random_;
};

Corpus readCorpus(const QString& path) {
    if (QFileInfo(path).isFile()) return {readFile(path)};
    Corpus corpus;
    const QDir folder(path);
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) corpus.push_back(readFile(folder.filePath(name)).left(longestInput));
    return corpus;
}

/// Returns in the parent with the child's status.
int inChild(const auto& job) {
    const pid_t child = fork();
    expect(child >= 0, "there is room for a process");
    if (child == 0) {
        job();
        std::exit(0);  // runs the sanitizers' own checks, of leaks for one
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

/// In the current folder, in the place of an earlier one.
QString keep(const QByteArray& input, const QString& target) {
    QString path = QDir::current().filePath(QStringLiteral("finding-") + target);
    writeFile(path, input);
    return path;
}

int run(const QString& target, const QString& path, int rounds, unsigned seed) {
    const Corpus corpus = readCorpus(path);
    std::printf("%zu inputs and %d mutations of them, seed %u\n", corpus.size(), rounds, seed);
    std::fflush(stdout);
    expect(!corpus.empty(), "there are inputs");
    Attempt& attempt = Attempt::shared();
    const int status = inChild([&] {
        for (const QByteArray& input : corpus) attempt.make(input);
        Mutator mutator(corpus, seed);
        for (int round = 0; round < rounds; ++round) attempt.make(mutator.next());
    });
    if (status == 0) return 0;
    std::printf("FAILED with seed %u; the last input is in %s\n", seed,
                qPrintable(keep(attempt.input(), target)));
    return 1;
}

}  // namespace

}  // namespace parlivo::fuzz

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER_OR_FILE [ROUNDS [SEED]]\n", argv[0]);
        return 2;
    }
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 0;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10)) : 20261121U;
    const QString target = QFileInfo(QString::fromLocal8Bit(argv[0])).fileName();
    return parlivo::fuzz::run(target, QString::fromLocal8Bit(argv[1]), rounds, seed);
}
