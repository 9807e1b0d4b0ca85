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
/// is there or not; downloading is a separate act, offered for the chosen tier. A download goes on when
/// another tier is chosen meanwhile.
class TierPicker : public QWidget {
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
    QWidget* progressBar(double fraction);

    const std::vector<ModelCatalog::Entry> tiers_;
    Binding<QString> selection_;
    std::function<void()> onChanged_;
    ModelFetch fetch_;

    /// A download under way.
    struct Running {
        double progress = 0;
        std::shared_ptr<void> downloader;
    };
    std::map<QString, Running> downloading_;  ///< by the tier's id
    std::optional<QString> error_;

    std::vector<ChoiceRow*> rows_;
    QProgressBar* bar_ = nullptr;  ///< the one in the chosen row, if any
    Label* errorLine_;
};

}  // namespace parlivo
