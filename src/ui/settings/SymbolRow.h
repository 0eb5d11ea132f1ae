#pragma once

#include <QColor>
#include <QString>
#include <QTimer>
#include <QWidget>

class QLabel;

// A status line: a small symbol (or a turning spinner) followed by word-wrapped text.
class SymbolRow : public QWidget {
    Q_OBJECT
public:
    SymbolRow(double textPixels, int symbolPixels, QWidget* parent = nullptr);

    // An empty symbol shows the text alone.
    void set(const QString& symbol, const QColor& symbolColor, const QString& text);
    // A spinner in `color` in place of the symbol.
    void setSpinner(const QColor& color, const QString& text);

    QString symbol() const { return symbol_; }
    QString text() const;
    bool isSpinning() const { return spinTimer_.isActive(); }
    QLabel* textLabel() const { return text_; }

private:
    void drawSymbol();

    int symbolPixels_;
    QLabel* icon_ = nullptr;
    QLabel* text_ = nullptr;
    QString symbol_;
    QColor color_;
    double angle_ = 0;
    QTimer spinTimer_;
};
