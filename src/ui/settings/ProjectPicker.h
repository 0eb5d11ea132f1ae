#pragma once

#include "ui/settings/FormSection.h"

#include <QList>
#include <QStringList>

class AppState;
class QCheckBox;
class QPushButton;
class QToolButton;

// The projects the token can see, one checkbox each, ticked when the project is monitored, and a
// bell whose menu mutes it (how long a mute lasts is written beside it); a header with the count,
// All, None and a reload button. Shown while connected.
class ProjectPicker : public FormSection {
    Q_OBJECT
public:
    explicit ProjectPicker(AppState& state, QWidget* parent = nullptr);

    // Follows the state: rebuilds the checkboxes when the list changed, else only ticks them.
    void refresh();

    QString countText() const;
    QList<QCheckBox*> checkBoxes() const { return boxes_; }
    // Per project, in the same order: the mute button and its "Muted until …" text.
    QList<QToolButton*> muteButtons() const { return muteButtons_; }
    QList<QLabel*> muteLabels() const { return muteLabels_; }
    QPushButton* allButton() const { return all_; }
    QPushButton* noneButton() const { return none_; }
    QToolButton* reloadButton() const { return reload_; }
    // "No project found." when the list is empty, else empty.
    QString emptyText() const;

private:
    void rebuildBoxes();

    AppState& state_;
    QLabel* count_ = nullptr;
    QPushButton* all_ = nullptr;
    QPushButton* none_ = nullptr;
    QToolButton* reload_ = nullptr;
    QLabel* empty_ = nullptr;
    QWidget* list_ = nullptr;
    QList<QCheckBox*> boxes_;
    QList<QToolButton*> muteButtons_;
    QList<QLabel*> muteLabels_;
    QList<QWidget*> rows_;
    QStringList builtKeys_;
};
