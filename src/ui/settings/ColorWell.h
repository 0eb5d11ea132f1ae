#pragma once

#include <QColor>
#include <QPointer>
#include <QToolButton>

#include <QColorDialog>

// A button showing a colour; it opens a colour dialog beside the window, whose every change
// (also while dragging) is announced at once, so what the colour paints follows live. Cancel
// puts back the colour the dialog opened with.
class ColorWell : public QToolButton {
    Q_OBJECT
public:
    explicit ColorWell(const QString& title, QWidget* parent = nullptr);

    QColor color() const { return color_; }
    void setColor(const QColor& color);

    void openDialog();
    // The open dialog, if any.
    QColorDialog* dialog() const { return dialog_; }

Q_SIGNALS:
    void colorPicked(const QColor& color);

private:
    QString title_;
    QColor color_;
    QColor opened_; // the colour when the dialog was last shown, for Cancel
    QPointer<QColorDialog> dialog_;
};
