// SPDX-License-Identifier: MIT
#include "models/ModelsMover.h"

#include "models/ModelsMove.h"
#include "settings/Config.h"
#include "support/Clock.h"
#include "support/MainQueue.h"

#include <memory>
#include <utility>

namespace parlivo {

namespace {

/// A download that began in the old folder may have ended there after the models were staged.
void moveLatecomers(const QString& from, const QString& to) {
    ModelsMove move(from, to);
    move.stage();
    move.commit();
}

}  // namespace

void ModelsMover::move(const QString& to, std::function<void()> onAdopted) {
    const QString from = Config::modelsDir();
    queue_.async([this, alive = lifetime_.token(), from, to, onAdopted = std::move(onAdopted)] {
        const auto move = std::make_shared<ModelsMove>(from, to);
        move->stage();
        if (Clock::interrupted()) return;
        MainQueue::async(alive, [this, from, to, move, onAdopted] {
            Config::set(Settings::modelsDir, to);
            onAdopted();
            queue_.async([move, from, to] {
                // Before the old files go, the next start must know of the new ones.
                Config::flush();
                move->commit();
                moveLatecomers(from, to);
            });
        });
    });
}

}  // namespace parlivo
