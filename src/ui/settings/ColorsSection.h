#pragma once

#include "ui/settings/FormSection.h"

#include <QPointer>

class AppState;
class ColorPreview;
class ColorWell;
class QPushButton;
class StatusPalette;

// The three status colours, each in a well that writes through to the palette; Test plays the
// colour preview run and Reset brings back the built-in colours.
class ColorsSection : public FormSection {
    Q_OBJECT
public:
    // Without a preview, Test stays disabled.
    ColorsSection(StatusPalette& palette, ColorPreview* preview, QWidget* parent = nullptr);

    ColorWell* successWell() const { return success_; }
    ColorWell* queuedWell() const { return queued_; }
    ColorWell* errorWell() const { return error_; }
    QPushButton* testButton() const { return test_; }
    QPushButton* resetButton() const { return reset_; }

private:
    ColorWell* addWell(const QString& label, void (StatusPalette::*setter)(const QColor&));
    void refresh();

    StatusPalette& palette_;
    QPointer<ColorPreview> preview_;
    ColorWell* success_ = nullptr;
    ColorWell* queued_ = nullptr;
    ColorWell* error_ = nullptr;
    QPushButton* test_ = nullptr;
    QPushButton* reset_ = nullptr;
};
