#include "ui/settings/SettingsWindow.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/settings/SettingsView.h"
#include "ui/settings/VercelSettings.h"

#include <QCloseEvent>
#include <QLineEdit>
#include <QVBoxLayout>

SettingsWindow::SettingsWindow(AppState& state, StatusPalette& palette, ColorPreview* preview,
                               UpdateService* updater, QWidget* parent)
    : QWidget(parent, Qt::Window) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    view_ = new SettingsView(state, palette, preview, updater, this);
    layout->addWidget(view_);
    setFixedWidth(SettingsView::viewWidth);
    updateTitle();
    fitContent();
    connect(view_, &SettingsView::contentChanged, this, &SettingsWindow::fitContent);
    connect(view_, &SettingsView::contentChanged, this, &SettingsWindow::updateTitle);
}

void SettingsWindow::present() {
    view_->setTab(SettingsView::Tab::vercel);
    // A window that opens starts in the token field, so a copied token is pasted at once.
    if (!isVisible())
        view_->vercel()->tokenField()->setFocus(Qt::ActiveWindowFocusReason);
    show();
    raise();
    activateWindow();
}

void SettingsWindow::closeEvent(QCloseEvent* event) {
    view_->setTab(SettingsView::Tab::vercel);
    QWidget::closeEvent(event);
}

void SettingsWindow::updateTitle() {
    setWindowTitle(Language::text("Quillon Settings", "Réglages de Quillon"));
}

void SettingsWindow::fitContent() {
    resize(SettingsView::viewWidth, view_->sizeHint().height());
}
