#pragma once

#include <QWidget>

class QLabel;
class StatusPalette;

// The About tab: the product's emblem and name, the version, a tagline and the maker's links.
class AboutSettings : public QWidget {
    Q_OBJECT
public:
    explicit AboutSettings(const StatusPalette& palette, QWidget* parent = nullptr);

    QLabel* titleLabel() const { return title_; }
    QLabel* versionLabel() const { return version_; }
    QLabel* taglineLabel() const { return tagline_; }
    QLabel* linksLabel() const { return links_; }

private:
    QLabel* title_ = nullptr;
    QLabel* version_ = nullptr;
    QLabel* tagline_ = nullptr;
    QLabel* links_ = nullptr;
};
