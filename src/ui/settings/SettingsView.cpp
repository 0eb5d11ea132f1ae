#include "ui/settings/SettingsView.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "core/update/UpdateService.h"
#include "ui/common/SymbolArt.h"
#include "ui/settings/AboutSettings.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/VercelSettings.h"
#include "ui/status/ColorPreview.h"
#include "ui/status/StatusPalette.h"

#include <QScrollArea>
#include <QTabBar>
#include <QTimer>

namespace {

QScrollArea* scrolling(QWidget* content) {
    auto* area = new QScrollArea;
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The form draws on the window colour, like the rest of the window.
    area->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    return area;
}

} // namespace

SettingsView::SettingsView(AppState& state, StatusPalette& palette, ColorPreview* preview,
                           UpdateService* updater, QWidget* parent)
    : QTabWidget(parent), state_(state), palette_(palette), preview_(preview), updater_(updater) {
    setDocumentMode(true);
    tabBar()->setExpanding(false);
    setFixedWidth(viewWidth);
    build();
    connect(this, &QTabWidget::currentChanged, this, &SettingsView::contentChanged);
    connect(&state_, &AppState::preferencesChanged, this, &SettingsView::rebuildIfLanguageChanged);
}

void SettingsView::build() {
    builtFrench_ = Language::isFrench();
    const QColor symbolColor = palette().color(QPalette::WindowText);
    vercel_ = new VercelSettings(state_, palette_);
    general_ = new GeneralSettings(state_, palette_, preview_, updater_);
    about_ = new AboutSettings(palette_);
    addTab(scrolling(vercel_), SymbolArt::icon(QStringLiteral("triangle"), symbolColor),
           QStringLiteral("Vercel"));
    addTab(scrolling(general_), SymbolArt::icon(QStringLiteral("slider.horizontal.3"), symbolColor),
           Language::text("General", "Général"));
    addTab(scrolling(about_), SymbolArt::icon(QStringLiteral("info.circle"), symbolColor),
           Language::text("About", "À propos"));
    // A page laid out anew (a section shown or hidden) may want another height.
    for (int i = 0; i < count(); ++i)
        qobject_cast<QScrollArea*>(widget(i))->viewport()->installEventFilter(this);
}

bool SettingsView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest && !fitQueued_) {
        fitQueued_ = true;
        QTimer::singleShot(0, this, [this] {
            fitQueued_ = false;
            Q_EMIT contentChanged();
        });
    }
    return QTabWidget::eventFilter(watched, event);
}

void SettingsView::rebuildIfLanguageChanged() {
    if (Language::isFrench() == builtFrench_ || rebuildQueued_)
        return;
    // Later, once the control that changed the language has finished with its signal.
    rebuildQueued_ = true;
    QTimer::singleShot(0, this, [this] {
        rebuildQueued_ = false;
        const int current = currentIndex();
        QList<QWidget*> pages;
        for (int i = 0; i < count(); ++i)
            pages << widget(i);
        {
            const QSignalBlocker quiet(this);
            clear();
            qDeleteAll(pages);
            build();
            setCurrentIndex(current);
        }
        Q_EMIT contentChanged();
    });
}

QSize SettingsView::sizeHint() const {
    int content = 0;
    if (auto* area = qobject_cast<QScrollArea*>(currentWidget())) {
        QWidget* page = area->widget();
        content =
            page->hasHeightForWidth() ? page->heightForWidth(viewWidth) : page->sizeHint().height();
    }
    const int height = tabBar()->sizeHint().height() + content + 2;
    return {viewWidth, std::min(height, maxHeight)};
}

void SettingsView::showEvent(QShowEvent* event) {
    setTab(Tab::vercel);
    QTabWidget::showEvent(event);
}
