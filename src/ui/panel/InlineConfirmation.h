#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

class RowAction;

// The question an action asks inside its row before anything is sent: the sentence, wrapped, then
// the action and "Keep" as two capsules. The panel is a popup that a separate window would close,
// so the question stays in it. Escape keeps; nothing is confirmed by a key.
class InlineConfirmation : public QWidget {
    Q_OBJECT
public:
    static constexpr double textSize = 11;
    static constexpr double buttonsGap = 6;
    static constexpr double buttonSpacing = 6;

    explicit InlineConfirmation(QWidget* parent = nullptr);

    // Shows `question` with a capsule titled `action` (drawn with `symbol` in `tint`) and "Keep".
    void ask(const QString& question, const QString& action, const QString& symbol, QColor tint,
             QColor textColor);
    QString question() const { return question_; }
    RowAction* confirmButton() const { return confirm_; }
    RowAction* keepButton() const { return keep_; }

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

Q_SIGNALS:
    void confirmed();
    void kept();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QFont textFont() const;
    double textHeight(int width) const;
    void layoutButtons();

    QString question_;
    QColor textColor_;
    RowAction* confirm_;
    RowAction* keep_;
};
