#include "ui/settings/ProjectPicker.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/common/MuteMenu.h"
#include "ui/common/SymbolArt.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

ProjectPicker::ProjectPicker(AppState& state, QWidget* parent)
    : FormSection(Language::text("Monitored projects", "Projets surveillés"), parent),
      state_(state) {
    count_ = new QLabel(this);
    makeSecondary(count_);
    headerLayout()->insertWidget(1, count_);
    all_ = new QPushButton(Language::text("All", "Tous"), this);
    none_ = new QPushButton(Language::text("None", "Aucun"), this);
    reload_ = new QToolButton(this);
    reload_->setAutoRaise(true);
    reload_->setIcon(
        SymbolArt::icon(QStringLiteral("arrow.clockwise"), palette().color(QPalette::WindowText)));
    reload_->setToolTip(Language::text("Reload list", "Recharger la liste"));
    reload_->setAccessibleName(reload_->toolTip());
    for (QWidget* control : {static_cast<QWidget*>(all_), static_cast<QWidget*>(none_),
                             static_cast<QWidget*>(reload_)})
        headerLayout()->addWidget(control);
    connect(all_, &QPushButton::clicked, this, [this] { state_.setAllMonitored(true); });
    connect(none_, &QPushButton::clicked, this, [this] { state_.setAllMonitored(false); });
    connect(reload_, &QToolButton::clicked, this, [this] { state_.loadProjects(); });

    // One row holds either the empty-state text or the checkboxes, so no hairline is left over.
    auto* content = new QWidget;
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(0, 0, 0, 0);
    empty_ =
        secondaryLabel(Language::text("No project found.", "Aucun projet trouvé."), 13, content);
    contentLayout->addWidget(empty_);
    list_ = new QWidget(content);
    auto* layout = new QVBoxLayout(list_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    contentLayout->addWidget(list_);
    addRow(content);
    refresh();
}

QString ProjectPicker::countText() const {
    return count_->text();
}

QString ProjectPicker::emptyText() const {
    return empty_->isVisibleTo(this) ? empty_->text() : QString();
}

void ProjectPicker::refresh() {
    const QList<ProjectRef>& projects = state_.availableProjects();
    QStringList keys;
    for (const ProjectRef& ref : projects)
        keys << ref.id + QLatin1Char('\n') + ref.name;
    if (keys != builtKeys_) {
        builtKeys_ = keys;
        rebuildBoxes();
    }
    const QSet<QString> monitored = state_.effectiveMonitoredIDs();
    const QColor symbolColor = palette().color(QPalette::WindowText);
    for (int i = 0; i < boxes_.size(); ++i) {
        const QSignalBlocker quiet(boxes_[i]);
        boxes_[i]->setChecked(monitored.contains(projects[i].id));
        const std::optional<ProjectMute> mute = state_.activeMute(projects[i].id);
        muteLabels_[i]->setText(mute ? mutedText(*mute, state_.clock().now()) : QString());
        muteLabels_[i]->setVisible(mute.has_value());
        muteButtons_[i]->setIcon(SymbolArt::icon(
            mute ? QStringLiteral("bell.slash") : QStringLiteral("bell"), symbolColor));
    }
    count_->setText(QStringLiteral("%1/%2").arg(monitored.size()).arg(projects.size()));
    empty_->setVisible(projects.isEmpty());
    list_->setVisible(!projects.isEmpty());
}

void ProjectPicker::rebuildBoxes() {
    qDeleteAll(rows_);
    rows_.clear();
    boxes_.clear();
    muteButtons_.clear();
    muteLabels_.clear();
    for (const ProjectRef& ref : state_.availableProjects()) {
        auto* row = new QWidget(list_);
        auto* layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        auto* box = new QCheckBox(ref.name, row);
        const QString id = ref.id;
        connect(box, &QCheckBox::clicked, this, [this, id](bool on) {
            if (on)
                state_.addMonitored(id);
            else
                state_.removeMonitored(id);
        });
        layout->addWidget(box, 1);
        QLabel* muted = secondaryLabel({}, footerPixels, row);
        muted->setWordWrap(false);
        layout->addWidget(muted);
        auto* mute = new QToolButton(row);
        mute->setAutoRaise(true);
        mute->setPopupMode(QToolButton::InstantPopup);
        mute->setToolTip(
            Language::text("Mute notifications", "Mettre les notifications en sourdine"));
        mute->setAccessibleName(mute->toolTip() + QStringLiteral(": ") + ref.name);
        // Built when opened, so it offers what holds then (a mute may have ended meanwhile).
        auto* menu = new QMenu(mute);
        const QString name = ref.name;
        connect(menu, &QMenu::aboutToShow, this, [this, menu, id, name] {
            menu->clear();
            addMuteActions(*menu, state_, id, name);
        });
        mute->setMenu(menu);
        layout->addWidget(mute);
        list_->layout()->addWidget(row);
        rows_.append(row);
        boxes_.append(box);
        muteLabels_.append(muted);
        muteButtons_.append(mute);
    }
}
