#pragma once

#include <QToolButton>
#include <QVariantAnimation>

// A footer button of the panel: a symbol and a title in the secondary colour, turning primary
// under the pointer behind a rounded highlight that reaches past the padding; hover eases in and
// out over 0.35 s, and the whole button dims while pressed.
class FooterButton : public QToolButton {
    Q_OBJECT
public:
    FooterButton(QString symbol, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    // 0 at rest, 1 fully hovered; between the two while the hover eases.
    double hoverProgress() const { return hover_; }

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void easeTo(double target);

    QString symbol_;
    double hover_ = 0;
    QVariantAnimation ease_;
};
