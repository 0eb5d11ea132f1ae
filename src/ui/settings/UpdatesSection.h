#pragma once

#include "ui/settings/FormSection.h"

#include <QPointer>

class Preferences;
class QCheckBox;
class QPushButton;
class UpdateService;

// Automatic update checks, the version and a manual check. The choice is kept under the key the
// updater reads at start, so it holds from the next launch even if this section is never shown.
class UpdatesSection : public FormSection {
    Q_OBJECT
public:
    static const QString automaticChecksKey; // "SUEnableAutomaticChecks"

    // Without an updater the toggle only stores the choice and "Check now" is disabled.
    UpdatesSection(Preferences& preferences, UpdateService* updater, QWidget* parent = nullptr);

    static bool automaticChecks(const Preferences& preferences);

    QCheckBox* automaticToggle() const { return automatic_; }
    QLabel* versionLabel() const { return version_; }
    QPushButton* checkButton() const { return check_; }
    QLabel* resultLabel() const { return result_; }

private:
    void setAutomatic(bool on);
    void refresh();

    Preferences& preferences_;
    QPointer<UpdateService> updater_;
    QCheckBox* automatic_ = nullptr;
    QLabel* version_ = nullptr;
    QPushButton* check_ = nullptr;
    QLabel* result_ = nullptr;
};
