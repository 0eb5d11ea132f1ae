#include "app/PlaceholderPanel.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/status/ColorPreview.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QVBoxLayout>

PlaceholderPanel::PlaceholderPanel(AppState& state, ColorPreview& preview)
    : QWidget(nullptr, Qt::Popup), state_(state), preview_(preview) {
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("Quillon"), this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    layout->addWidget(title);
    layout->addWidget(&summary_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(&test_);
    buttons->addStretch();
    buttons->addWidget(&quit_);
    layout->addLayout(buttons);
    connect(&test_, &QPushButton::clicked, &preview_, &ColorPreview::previewColors);
    connect(&quit_, &QPushButton::clicked, qApp, &QCoreApplication::quit);
    connect(&state_, &AppState::changed, this, &PlaceholderPanel::refresh);
    connect(&preview_, &ColorPreview::previewingChanged, this, &PlaceholderPanel::refresh);
    refresh();
}

void PlaceholderPanel::refresh() {
    summary_.setText(state_.statusSummary());
    test_.setText(Language::text("Test", "Tester"));
    test_.setEnabled(!preview_.isPreviewingColors());
    quit_.setText(Language::text("Quit", "Quitter"));
}

void PlaceholderPanel::popUpAt(const QPoint& anchor) {
    refresh();
    adjustSize();
    QRect frame(QPoint(anchor.x() - width() / 2, anchor.y() + 8), size());
    if (QScreen* screen = QGuiApplication::screenAt(anchor)) {
        const QRect area = screen->availableGeometry();
        if (frame.bottom() > area.bottom())
            frame.moveBottom(anchor.y() - 8);
        frame.moveLeft(std::clamp(frame.left(), area.left(), area.right() - frame.width()));
    }
    move(frame.topLeft());
    show();
}
