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

/// Chooses one model tier out of a list and downloads it in place. Choosing counts at once, whether the file
/// is there or not; downloading is a separate act, offered for the chosen tier. A download goes on out of
/// sight when another tier is chosen meanwhile.
class TierPicker : public QWidget {
    Q_OBJECT

  public:
    /// `onChanged` follows every choice, even of what was chosen already, and every end of a download.
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
    QWidget* trailingOf(const ModelCatalog::Entry& entry, bool selected);
    QWidget* makeBar();

    const std::vector<ModelCatalog::Entry> tiers_;
    Binding<QString> selection_;
    std::function<void()> onChanged_;
    ModelFetch fetch_;

    /// There is one progress to a picker: that of the download begun last, of the tier of this id. One that
    /// was begun before goes on out of sight.
    std::optional<QString> downloading_;
    double progress_ = 0;
    std::optional<QString> error_;
    std::map<QString, std::shared_ptr<void>> downloaders_;  ///< those under way, by the tier's id

    std::vector<ChoiceRow*> rows_;
    QProgressBar* bar_ = nullptr;  ///< the one in the chosen row, if any
    Label* errorLine_ = nullptr;
};

}  // namespace parlivo
