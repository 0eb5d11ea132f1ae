#include "ui/settings/ColorWell.h"

#include <QColorDialog>
#include <QPainter>

namespace {

QIcon swatch(const QColor& color, const QColor& outline) {
    QPixmap pixmap(QSize(36, 16) * 2);
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(outline, 1));
    p.setBrush(color);
    p.drawRoundedRect(QRectF(0.5, 0.5, 35, 15), 4, 4);
    return QIcon(pixmap);
}

} // namespace

ColorWell::ColorWell(const QString& title, QWidget* parent) : QToolButton(parent), title_(title) {
    setIconSize(QSize(36, 16));
    setAccessibleName(title);
    setToolTip(title);
    connect(this, &QToolButton::clicked, this, &ColorWell::openDialog);
}

void ColorWell::setColor(const QColor& color) {
    if (color == color_)
        return;
    color_ = color;
    QColor outline = palette().color(QPalette::WindowText);
    outline.setAlphaF(0.25);
    setIcon(swatch(color, outline));
    if (dialog_ && dialog_->currentColor() != color) {
        const QSignalBlocker quiet(dialog_);
        dialog_->setCurrentColor(color);
    }
}

void ColorWell::openDialog() {
    if (!dialog_) {
        // Qt's own dialog: a desktop's native one may report only the final choice.
        auto* dialog = new QColorDialog(color_, this);
        dialog->setOption(QColorDialog::DontUseNativeDialog);
        dialog->setWindowTitle(title_);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QColorDialog::currentColorChanged, this, &ColorWell::colorPicked);
        connect(dialog, &QDialog::rejected, this, [this] { Q_EMIT colorPicked(opened_); });
        dialog_ = dialog;
    }
    if (!dialog_->isVisible())
        opened_ = color_;
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}
