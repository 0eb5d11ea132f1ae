#pragma once

#include <QFrame>
#include <QString>

class QBoxLayout;
class QHBoxLayout;
class QLabel;
class QVBoxLayout;

// One group of a settings form: an optional header above a rounded box whose rows are parted by
// hairlines, and an optional footer in small secondary text under it. Colours come from the
// window's palette, so the form follows a light or a dark desktop theme.
class FormSection : public QWidget {
    Q_OBJECT
public:
    static constexpr int footerPixels = 11;

    explicit FormSection(const QString& header = {}, QWidget* parent = nullptr);

    // The header line: its title, and a layout after it for extra controls.
    QLabel* headerLabel() const { return header_; }
    QHBoxLayout* headerLayout() const { return headerRow_; }

    // Appends a row to the box; a hairline separates it from the one before.
    void addRow(QWidget* row);
    // A row holding `label` on the left and `control` on the right.
    QWidget* addLabeledRow(const QString& label, QWidget* control);

    // Sets (or, when empty, hides) the footer text.
    QLabel* setFooter(const QString& text);
    QLabel* footer() const { return footer_; }

    // Small secondary text, word-wrapped.
    static QLabel* secondaryLabel(const QString& text, double pixels, QWidget* parent = nullptr);
    static void makeSecondary(QWidget* widget);
    static void setPixels(QWidget* widget, double pixels);
    static QColor secondaryColor(const QPalette& palette);

private:
    QLabel* header_ = nullptr;
    QHBoxLayout* headerRow_ = nullptr;
    QFrame* box_ = nullptr;
    QVBoxLayout* rows_ = nullptr;
    QLabel* footer_ = nullptr;
};
