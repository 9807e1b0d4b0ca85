// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "ui/ModelFetch.h"
#include "ui/views/Binding.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QProgressBar;

namespace parlivo {

class ChoiceRow;
class Label;

/// Chooses one model tier out of a list and downloads it in place. A choice is stored at once, whether the
/// file is there or not; downloading is a separate action, offered for the chosen tier. A download goes on,
/// without its progress bar, when another tier is chosen meanwhile.
class TierPicker : public QWidget {
    Q_OBJECT

  public:
    /// `onChanged` is called after every choice, also of the tier that was chosen already, and after every
    /// end of a download.
    TierPicker(const QString& title, std::vector<ModelCatalog::Entry> tiers, Binding<QString> selection,
               std::function<void()> onChanged, ModelFetch fetch, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void choose(const ModelCatalog::Entry& entry);
    void download(const ModelCatalog::Entry& entry);
    void showProgress(const QString& id, double fraction);
    void finish(const QString& id, const std::optional<Error>& error);
    void refresh();
    void showStandIn(const QString& selected);
    QWidget* trailingOf(const ModelCatalog::Entry& entry, bool selected);
    QWidget* makeBar();

    const std::vector<ModelCatalog::Entry> tiers_;
    Binding<QString> selection_;
    std::function<void()> onChanged_;
    ModelFetch fetch_;

    /// The tier whose progress is shown: that of the download that was started last. One that was started
    /// before goes on without a progress bar.
    std::optional<QString> downloading_;
    double progress_ = 0;
    std::optional<QString> error_;
    std::map<QString, std::shared_ptr<void>> downloaders_;  ///< those under way, by the tier's id

    std::vector<ChoiceRow*> rows_;
    QProgressBar* bar_ = nullptr;  ///< the one in the chosen row, if any
    Label* standInLine_ = nullptr;
    Label* errorLine_ = nullptr;
};

}  // namespace parlivo
