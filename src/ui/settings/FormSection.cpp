#include "ui/settings/FormSection.h"

#include "ui/status/LayoutFont.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace {

// The box: the palette's base colour, a faint outline, rounded corners.
class FormBox : public QFrame {
public:
    using QFrame::QFrame;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        QColor outline = palette().color(QPalette::WindowText);
        outline.setAlphaF(0.13);
        p.setPen(QPen(outline, 1));
        p.setBrush(palette().color(QPalette::Base));
        p.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    }
};

QFrame* hairline(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFixedHeight(1);
    QColor color = parent->palette().color(QPalette::WindowText);
    color.setAlphaF(0.09);
    line->setAutoFillBackground(true);
    QPalette palette = line->palette();
    palette.setColor(QPalette::Window, color);
    line->setPalette(palette);
    return line;
}

} // namespace

FormSection::FormSection(const QString& header, QWidget* parent) : QWidget(parent) {
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(6);

    headerRow_ = new QHBoxLayout;
    headerRow_->setContentsMargins(4, 0, 0, 0);
    headerRow_->setSpacing(6);
    header_ = new QLabel(header, this);
    QFont bold = header_->font();
    bold.setWeight(QFont::DemiBold);
    header_->setFont(bold);
    headerRow_->addWidget(header_);
    headerRow_->addStretch(1);
    root->addLayout(headerRow_);
    header_->setVisible(!header.isEmpty());

    box_ = new FormBox(this);
    rows_ = new QVBoxLayout(box_);
    rows_->setContentsMargins(12, 2, 12, 2);
    rows_->setSpacing(0);
    root->addWidget(box_);

    footer_ = secondaryLabel({}, footerPixels, this);
    footer_->setContentsMargins(4, 0, 4, 0);
    footer_->hide();
    root->addWidget(footer_);
}

void FormSection::addRow(QWidget* row) {
    if (rows_->count() > 0)
        rows_->addWidget(hairline(box_));
    // Every row gets the same breathing room, whatever the widget's own size hint says.
    auto* holder = new QWidget(box_);
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 7, 0, 7);
    layout->addWidget(row);
    rows_->addWidget(holder);
}

QWidget* FormSection::addLabeledRow(const QString& label, QWidget* control) {
    auto* row = new QWidget(box_);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* text = new QLabel(label, row);
    text->setBuddy(control);
    layout->addWidget(text, 1);
    control->setParent(row);
    layout->addWidget(control);
    addRow(row);
    return row;
}

QLabel* FormSection::setFooter(const QString& text) {
    footer_->setText(text);
    footer_->setVisible(!text.isEmpty());
    return footer_;
}

QColor FormSection::secondaryColor(const QPalette& palette) {
    QColor color = palette.color(QPalette::WindowText);
    color.setAlphaF(0.62);
    return color;
}

void FormSection::makeSecondary(QWidget* widget) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, secondaryColor(palette));
    palette.setColor(QPalette::Text, secondaryColor(palette));
    widget->setPalette(palette);
}

void FormSection::setPixels(QWidget* widget, double pixels) {
    QFont font = widget->font();
    setLayoutPixelSize(font, pixels);
    widget->setFont(font);
}

QLabel* FormSection::secondaryLabel(const QString& text, double pixels, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    setPixels(label, pixels);
    makeSecondary(label);
    return label;
}
