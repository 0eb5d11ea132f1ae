#pragma once

#include <QWidget>

class AppState;
class ColorPreview;
class ColorsSection;
class FormSection;
class QCheckBox;
class QComboBox;
class StatusPalette;
class SymbolRow;
class UpdateService;
class UpdatesSection;

// The General tab: the preferences of AppState, bound both ways (each control writes at once and
// shows what the state holds after the write), the colours, the updates and the last error.
class GeneralSettings : public QWidget {
    Q_OBJECT
public:
    GeneralSettings(AppState& state, StatusPalette& palette, ColorPreview* preview,
                    UpdateService* updater, QWidget* parent = nullptr);

    // Re-reads every value from the state.
    void refresh();

    QComboBox* languagePicker() const { return language_; }
    QComboBox* intervalPicker() const { return interval_; }
    QCheckBox* heroToggle() const { return hero_; }
    QCheckBox* loginToggle() const { return login_; }
    QCheckBox* liveActivityToggle() const { return live_; }
    QCheckBox* notifyToggle() const { return notify_; }
    QCheckBox* slowBuildToggle() const { return slowBuild_; }
    QCheckBox* productionOnlyToggle() const { return productionOnly_; }
    // What may interrupt: production only, only mine, no bots, and "live again".
    QCheckBox* notifyProductionToggle() const { return notifyProduction_; }
    QCheckBox* onlyMineToggle() const { return onlyMine_; }
    QCheckBox* botsToggle() const { return bots_; }
    QCheckBox* fixedToggle() const { return fixed_; }
    ColorsSection* colors() const { return colors_; }
    UpdatesSection* updates() const { return updates_; }
    // Shown only while AppState has a last error.
    FormSection* errorSection() const { return errorSection_; }
    SymbolRow* errorRow() const { return error_; }

private:
    void buildGeneral(QWidget* parent);
    void buildNoise();
    QCheckBox* addToggleSection(const QString& header, const QString& toggle, const QString& footer,
                                void (AppState::*setter)(bool));

    AppState& state_;
    QComboBox* language_ = nullptr;
    QComboBox* interval_ = nullptr;
    QCheckBox* hero_ = nullptr;
    QCheckBox* login_ = nullptr;
    QCheckBox* live_ = nullptr;
    QCheckBox* notify_ = nullptr;
    QCheckBox* slowBuild_ = nullptr;
    QCheckBox* productionOnly_ = nullptr;
    QCheckBox* notifyProduction_ = nullptr;
    QCheckBox* onlyMine_ = nullptr;
    QCheckBox* bots_ = nullptr;
    QCheckBox* fixed_ = nullptr;
    ColorsSection* colors_ = nullptr;
    UpdatesSection* updates_ = nullptr;
    FormSection* errorSection_ = nullptr;
    SymbolRow* error_ = nullptr;
};
