// SPDX-License-Identifier: MIT
#include "audio/overlay/DictationOverlay.h"

#include "platform/Platform.h"

#include <utility>

namespace parlivo {

namespace {

constexpr PanelPlacing placing{
    .size = {240, 84}, .aboveEdge = 110, .cornerRadius = WaveformPainter::cornerRadius};

}  // namespace

DictationOverlay::DictationOverlay() = default;
DictationOverlay::~DictationOverlay() = default;

void DictationOverlay::setLevelProvider(LevelProvider provider) {
    levelProvider_ = std::move(provider);
    if (waveView_) waveView_->setLevelProvider(levelProvider_);
}

void DictationOverlay::rest() {
    if (!waveView_) return;
    waveView_->setLevelProvider({});
    waveView_->rest();
}

void DictationOverlay::show() {
    if (!panel_) {
        panel_ = Platform::current().floatingPanels().makePanel(placing);
        if (!panel_) return;
        waveView_ = std::make_unique<WaveformView>(*panel_, placing.size);
    }
    waveView_->setLevelProvider(levelProvider_);
    panel_->show();
    waveView_->start();
}

void DictationOverlay::hide() {
    if (!panel_) return;
    waveView_->stop();
    panel_->hide();
}

}  // namespace parlivo
