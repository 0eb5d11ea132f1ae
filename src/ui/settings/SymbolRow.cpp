#include "ui/settings/SymbolRow.h"

#include "ui/common/SymbolArt.h"
#include "ui/settings/FormSection.h"

#include <QHBoxLayout>
#include <QLabel>

namespace {
constexpr int spinStepMs = 50;
constexpr double spinDegreesPerStep = 30;
} // namespace

SymbolRow::SymbolRow(double textPixels, int symbolPixels, QWidget* parent)
    : QWidget(parent), symbolPixels_(symbolPixels) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    icon_ = new QLabel(this);
    icon_->setFixedSize(symbolPixels, symbolPixels);
    layout->addWidget(icon_, 0, Qt::AlignTop);
    text_ = new QLabel(this);
    text_->setWordWrap(true);
    text_->setTextFormat(Qt::PlainText);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    FormSection::setPixels(text_, textPixels);
    layout->addWidget(text_, 1);
    spinTimer_.setInterval(spinStepMs);
    connect(&spinTimer_, &QTimer::timeout, this, [this] {
        angle_ = std::fmod(angle_ + spinDegreesPerStep, 360.0);
        drawSymbol();
    });
}

void SymbolRow::set(const QString& symbol, const QColor& symbolColor, const QString& text) {
    if (!spinTimer_.isActive() && symbol == symbol_ && symbolColor == color_ &&
        text == this->text())
        return; // the state is re-announced often; keep redraws for real changes
    spinTimer_.stop();
    symbol_ = symbol;
    color_ = symbolColor;
    angle_ = 0;
    icon_->setVisible(!symbol.isEmpty());
    text_->setText(text);
    drawSymbol();
}

void SymbolRow::setSpinner(const QColor& color, const QString& text) {
    if (spinTimer_.isActive() && color == color_ && text == this->text())
        return;
    set(QStringLiteral("spinner"), color, text);
    spinTimer_.start();
}

QString SymbolRow::text() const {
    return text_->text();
}

void SymbolRow::drawSymbol() {
    if (symbol_.isEmpty())
        return;
    icon_->setPixmap(SymbolArt::drawn(symbol_, color_, symbolPixels_, devicePixelRatioF(), angle_));
}
