// SPDX-License-Identifier: MIT
#include "ui/settings/SettingsView.h"

#include "settings/Config.h"
#include "ui/settings/CleanupTab.h"
#include "ui/settings/DictationTab.h"
#include "ui/settings/DictionaryTab.h"
#include "ui/settings/GeneralTab.h"
#include "ui/views/SymbolIcon.h"

#include <QEvent>
#include <QScrollBar>
#include <QTabBar>

#include <algorithm>
#include <array>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

const std::array symbols{u"gearshape"_s, u"mic"_s, u"wand.and.stars"_s, u"character.book.closed"_s};

}  // namespace

SettingsView::SettingsView(const SettingsActions& actions, QWidget* parent) : QTabWidget(parent) {
    setUsesScrollButtons(false);
    // Without a frame of its own: the window is all tabs.
    setDocumentMode(true);
    addTab(new GeneralTab(actions), tr("Generale"));
    addTab(new DictationTab(actions), tr("Dettatura"));
    addTab(new CleanupTab(actions), tr("Pulizia AI"));
    addTab(new DictionaryTab, tr("Dizionario"));
    drawIcons();
}

int SettingsView::leastWidth() const {
    int width = tabBar()->sizeHint().width();
    for (const auto* page : findChildren<FormPage*>())
        width = std::max(width, page->contents().minimumSizeHint().width() +
                                    page->verticalScrollBar()->sizeHint().width());
    return width;
}

void SettingsView::changeEvent(QEvent* event) {
    QTabWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) drawIcons();
}

void SettingsView::hideEvent(QHideEvent* event) {
    QTabWidget::hideEvent(event);
    Config::flush();
}

void SettingsView::drawIcons() {
    const QColor colour = palette().color(QPalette::WindowText);
    for (int i = 0; i < count(); ++i) {
        setTabIcon(i, SymbolIcon::icon(symbols.at(static_cast<std::size_t>(i)), colour));
    }
}

}  // namespace parlivo
