#include "ui/panel/InlineConfirmation.h"

#include "core/common/Language.h"
#include "ui/panel/RowAction.h"
#include "ui/status/LayoutFont.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace {

constexpr int textFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

} // namespace

InlineConfirmation::InlineConfirmation(QWidget* parent)
    : QWidget(parent), confirm_(new RowAction(this)), keep_(new RowAction(this)) {
    // Takes the keyboard while it asks, so Escape reaches it before the popup would close.
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
    confirm_->setAction([this] { Q_EMIT confirmed(); });
    keep_->setAction([this] { Q_EMIT kept(); });
}

void InlineConfirmation::ask(const QString& question, const QString& action, const QString& symbol,
                             QColor tint, QColor textColor) {
    question_ = question;
    textColor_ = textColor;
    confirm_->setTitle(action);
    confirm_->setSymbol(symbol);
    confirm_->setTint(tint);
    keep_->setTitle(Language::text("Keep", "Garder"));
    keep_->setSymbol(QString()); // a title alone: the mark belongs to the action
    keep_->setTint(std::nullopt);
    updateGeometry();
    layoutButtons();
    update();
}

QFont InlineConfirmation::textFont() const {
    QFont font = this->font();
    setLayoutPixelSize(font, textSize);
    return font;
}

double InlineConfirmation::textHeight(int width) const {
    return QFontMetricsF(textFont())
        .boundingRect(QRectF(0, 0, width, 1e6), textFlags, question_)
        .height();
}

int InlineConfirmation::heightForWidth(int width) const {
    const int buttons = std::max(confirm_->sizeHint().height(), keep_->sizeHint().height());
    return static_cast<int>(std::ceil(textHeight(width) + buttonsGap)) + buttons;
}

QSize InlineConfirmation::sizeHint() const {
    return {260, heightForWidth(260)};
}

void InlineConfirmation::layoutButtons() {
    const int top = static_cast<int>(std::ceil(textHeight(width()) + buttonsGap));
    const QSize confirm = confirm_->sizeHint(), keep = keep_->sizeHint();
    confirm_->setGeometry(0, top, confirm.width(), confirm.height());
    keep_->setGeometry(confirm.width() + qRound(buttonSpacing), top, keep.width(), keep.height());
}

void InlineConfirmation::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setFont(textFont());
    p.setPen(textColor_);
    p.drawText(QRectF(0, 0, width(), textHeight(width())), textFlags, question_);
}

void InlineConfirmation::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutButtons();
}

void InlineConfirmation::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        event->accept(); // the popup around it would close on it otherwise
        Q_EMIT kept();
        return;
    }
    QWidget::keyPressEvent(event);
}

// A click on the question stays here: the row around it would open the dashboard.
void InlineConfirmation::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void InlineConfirmation::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}
