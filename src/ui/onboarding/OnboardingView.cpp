// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingView.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "ui/SessionHints.h"
#include "ui/onboarding/DownloadPage.h"
#include "ui/onboarding/FolderPage.h"
#include "ui/onboarding/InkColour.h"
#include "ui/onboarding/MicrophoneMeter.h"
#include "ui/onboarding/OnboardingWindow.h"
#include "ui/onboarding/PermissionPage.h"
#include "ui/onboarding/QualityPage.h"
#include "ui/onboarding/ReadyPage.h"
#include "ui/onboarding/StepDots.h"
#include "ui/onboarding/TextPages.h"
#include "ui/views/Dialogs.h"
#include "ui/views/Form.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int pagePadding = 30;
constexpr int footerPadding = 20;

bool isAccessibilityTrusted() {
    return Platform::current().permissions().accessibilityTrusted(Permissions::Prompt::No);
}

}  // namespace

OnboardingView::OnboardingView(Actions actions, ModelFetch fetchModel, FreeSpace freeSpace, QWidget* parent)
    : QWidget(parent),
      actions_(std::move(actions)),
      modelsPath_(Config::modelsDir()),
      asrChoice_(Config::get(Settings::asrTier)),
      // The first run proposes the full cleanup, whatever is stored.
      cleanupChoice_(u"full"_s),
      downloads_(
          std::move(fetchModel), [this] { showDownloads(); }, std::move(freeSpace)),
      microphone_(Platform::current().permissions().microphone()),
      axGranted_(isAccessibilityTrusted()),
      pages_(new FormPage(this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    (new QVBoxLayout(&pages_->contents()))->setContentsMargins(0, 0, 0, 0);
    column->addWidget(pages_, 1);
    column->addWidget(makeFooter());
    showStep();
    Platform::current().permissions().observeMicrophone(
        this, [this](MicrophoneStatus status) { showMicrophone(status); });
    connect(&axTimer_, &QTimer::timeout, this, [this] { pollAccessibility(); });
    axTimer_.start(Clock::scaled(1s));
}

void OnboardingView::next() {
    if (step_ == Step::ready) {
        axTimer_.stop();
        actions_.done();
        return;
    }
    if (step_ == Step::quality) {
        Config::set(Settings::asrTier, asrChoice_);
        Config::set(Settings::cleanupTier, cleanupChoice_);
    }
    if (step_ == Step::folder) Config::set(Settings::modelsDir, modelsPath_);
    step_ = static_cast<Step>(static_cast<int>(step_) + 1);
    showStep();
}

void OnboardingView::showStep() {
    downloadPage_ = nullptr;
    permissionPage_ = nullptr;
    meter_ = nullptr;
    // Deleted later, because a button of the old page may lead here.
    if (page_) {
        page_->hide();
        page_->deleteLater();
    }
    page_ = makePage();
    page_->setContentsMargins(pagePadding, pagePadding, pagePadding, pagePadding);
    OnboardingWindow::applyStyle(*page_);
    pages_->contents().layout()->addWidget(page_);
    page_->show();
    updateFooter();
    main_->setFocus();
    if (step_ == Step::ready) static_cast<ReadyPage*>(page_)->field()->setFocus();
    if (step_ == Step::download) downloads_.startDownloads();
}

QWidget* OnboardingView::makePage() {
    switch (step_) {
        case Step::welcome:
            return makeWelcomePage(this);
        case Step::folder:
            return makeFolderPage();
        case Step::quality:
            return makeQualityPage();
        case Step::download:
            return makeDownloadPage();
        case Step::microphone:
            return makeMicrophonePage();
        case Step::accessibility:
            return makeAccessibilityPage();
        case Step::ready:
            break;
    }
    return new ReadyPage(actions_.chooseHotKey, this);
}

QWidget* OnboardingView::makeFolderPage() {
    return new FolderPage(
        modelsPath_, [this] { pickFolder(); }, this);
}

QWidget* OnboardingView::makeQualityPage() {
    auto* page = new QualityPage(this);
    page->section(tr("TRASCRIZIONE (obbligatoria)"), ModelCatalog::asrTiers(), asrChoice_,
                  [this](const QString& id) { asrChoice_ = id; });
    page->section(tr("PULIZIA AI (consigliata)"), ModelCatalog::cleanupTiers(), cleanupChoice_,
                  [this](const QString& id) { cleanupChoice_ = id; });
    return page;
}

QWidget* OnboardingView::makeDownloadPage() {
    downloadPage_ =
        new DownloadPage({.retry = [this] { downloads_.startDownloads(); }, .later = actions_.putOff}, this);
    return downloadPage_;
}

QWidget* OnboardingView::makeMicrophonePage() {
    permissionPage_ = new PermissionPage(
        {.symbol = u"mic.fill"_s,
         .title = tr("Permesso Microfono"),
         .text = tr(
             "Serve per registrare la tua voce mentre detti.\nL'audio viene trascritto sul Mac e subito cancellato."),
         .button = tr("Consenti microfono")},
        [this] { askForMicrophone(); }, this);
    meter_ = new MicrophoneMeter(permissionPage_);
    permissionPage_->add(meter_);
    showMicrophone(microphone_);
    return permissionPage_;
}

QWidget* OnboardingView::makeAccessibilityPage() {
    permissionPage_ = new PermissionPage(
        {.symbol = u"keyboard.fill"_s,
         .title = tr("Permesso Accessibilità"),
         .text = tr(
             "Serve per digitare il testo al posto tuo nell'app attiva.\nSenza questo permesso Parlivo non può scrivere.\n\nSi aprono le Impostazioni: attiva Parlivo nell'elenco."),
         .button = tr("Apri Impostazioni")},
        [] {
            Platform::current().permissions().accessibilityTrusted(Permissions::Prompt::Yes);
            Platform::current().workspace().openPrivacyPane(PrivacyPane::Accessibility);
        },
        this);
    permissionPage_->setGranted(axGranted_);
    permissionPage_->add(new SessionHints(
        SessionHint::Topic::Text, {TextStyle::Body, inkColour, Qt::AlignHCenter, {}}, *permissionPage_));
    return permissionPage_;
}

QWidget* OnboardingView::makeFooter() {
    auto* footer = new QWidget(this);
    auto* row = new QHBoxLayout(footer);
    row->setContentsMargins(footerPadding, footerPadding, footerPadding, footerPadding);
    row->setSpacing(12);
    dots_ = new StepDots(footer);
    skip_ = makeButton(
        tr("Salta"), [this] { next(); }, footer);
    skip_->setObjectName(u"plain"_s);
    main_ = makeButton(
        {}, [this] { next(); }, footer);
    main_->setObjectName(u"main"_s);
    main_->setDefault(true);
    row->addWidget(dots_);
    row->addStretch(1);
    row->addWidget(skip_);
    row->addWidget(main_);
    OnboardingWindow::applyStyle(*footer);
    return footer;
}

void OnboardingView::updateFooter() {
    dots_->setStep(step_);
    skip_->setVisible(step_ == Step::microphone || step_ == Step::accessibility);
    main_->setText(step_ == Step::ready ? tr("Inizia a dettare") : tr("Continua"));
    main_->setEnabled(step_ != Step::download || downloads_.state().downloadsDone);
}

void OnboardingView::showDownloads() {
    if (downloadPage_) downloadPage_->show(downloads_.state());
    updateFooter();
    if (downloads_.state().downloadsDone) main_->setFocus();
}

void OnboardingView::pickFolder() {
    const auto folder = Dialogs::current().chooseFolder(modelsPath_, tr("Usa questa cartella"));
    if (!folder) return;
    modelsPath_ = *folder;
    if (step_ == Step::folder) static_cast<FolderPage*>(page_)->showPath(modelsPath_);
}

void OnboardingView::askForMicrophone() {
    Platform::current().permissions().requestMicrophone(
        MicrophoneCheck::ByRecording, [this, alive = lifetime_.token()](bool granted) {
            MainQueue::async(alive, [this, granted] {
                showMicrophone(granted ? MicrophoneStatus::Authorised : MicrophoneStatus::Denied);
            });
        });
}

void OnboardingView::showMicrophone(MicrophoneStatus status) {
    microphone_ = status;
    if (step_ != Step::microphone) return;
    permissionPage_->setGranted(status == MicrophoneStatus::Authorised);
    meter_->setStatus(status);
}

void OnboardingView::pollAccessibility() {
    axGranted_ = isAccessibilityTrusted();
    if (step_ == Step::accessibility) permissionPage_->setGranted(axGranted_);
}

}  // namespace parlivo
