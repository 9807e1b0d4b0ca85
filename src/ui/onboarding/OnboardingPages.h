#pragma once

#include "models/ModelCatalog.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/views/Labels.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

/// What the pages of the first run are made of.
namespace parlivo {

/// The colours of the first run.
QColor inkColour(const QPalette& palette);
QColor paleInkColour(const QPalette& palette);

/// A page with everything in its middle, one below the other.
class CentredPage : public QWidget {
  public:
    explicit CentredPage(QWidget* parent);

    void symbol(const QString& name);
    void title(const QString& text);
    Label& text(const QString& text);
    void add(QWidget* widget);
    void gap(int points);

  private:
    QVBoxLayout* column_;
};

QWidget* makeWelcomePage(QWidget* parent);
QWidget* makeReadyPage(QWidget* parent);

/// Where the models go; `pick` is asked for another place and answers what is shown from then on.
class FolderPage : public CentredPage {
  public:
    FolderPage(const QString& path, const std::function<void()>& pick, QWidget* parent);
    void showPath(const QString& path);

  private:
    Label* path_;
};

/// The two choices of a model.
class QualityPage : public CentredPage {
  public:
    using Choose = std::function<void(const QString& id)>;
    explicit QualityPage(QWidget* parent);
    void section(const QString& heading, const std::vector<ModelCatalog::Entry>& tiers, const QString& chosen,
                 const Choose& choose);
};

class DownloadPage : public CentredPage {
  public:
    DownloadPage(const std::function<void()>& retry, QWidget* parent);
    void show(const DownloadState& state);

  private:
    void addProgress();
    void addFailure(const std::function<void()>& retry);

    QWidget* running_ = nullptr;
    Label* label_ = nullptr;
    QProgressBar* bar_ = nullptr;
    Label* figures_ = nullptr;
    QWidget* failed_ = nullptr;
    Label* error_ = nullptr;
    QWidget* done_ = nullptr;
};

/// Asks for one permission; says so once it is there.
class PermissionPage : public CentredPage {
  public:
    struct Words {
        QString symbol;
        QString title;
        QString text;
        QString button;
    };
    PermissionPage(const Words& words, const std::function<void()>& ask, QWidget* parent);
    void setGranted(bool granted);

  private:
    QPushButton* button_;
    QWidget* granted_;
};

/// How far the first run has come.
class StepDots : public QWidget {
  public:
    explicit StepDots(QWidget* parent);
    void setStep(Step step);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Step step_ = Step::welcome;
};

}  // namespace parlivo
