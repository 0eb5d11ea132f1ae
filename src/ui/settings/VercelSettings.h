#pragma once

#include "core/monitor/ConnectionState.h"

#include <QMessageBox>
#include <QPointer>
#include <QUrl>
#include <QWidget>

class AppState;
class FormSection;
class ProjectPicker;
class QLabel;
class QLineEdit;

class QPushButton;
class QToolButton;
class StatusPalette;
class SymbolRow;

// The Vercel tab: paste, check, replace and remove the access token, and choose the projects to
// monitor. It keeps only the token being typed and whether it is shown in clear; everything else
// is read from AppState, whose operations it calls.
class VercelSettings : public QWidget {
    Q_OBJECT
public:
    VercelSettings(AppState& state, StatusPalette& palette, QWidget* parent = nullptr);

    // Where a new token is created on Vercel's web site.
    static QUrl tokenPage();
    // The expiry line; empty for an unknown expiry.
    static QString expiryText(const TokenExpiry& expiry);

    // Redraws from the state.
    void refresh();
    // The Connect / Replace button and Return: the field is emptied at once, then a non-blank
    // copy goes to AppState::saveToken.
    void submit();
    // Asks before removing the token; "Remove" calls AppState::removeToken.
    void askRemoval();

    QLineEdit* tokenField() const { return field_; }
    QToolButton* revealButton() const { return reveal_; }
    QPushButton* submitButton() const { return submit_; }
    SymbolRow* statusRow() const { return status_; }
    SymbolRow* expiryRow() const { return expiry_; }
    SymbolRow* storageRow() const { return storage_; }
    // The teams Vercel keeps closed and its requests to slow down, one line each.
    SymbolRow* noticesRow() const { return notices_; }
    QLabel* footer() const;
    ProjectPicker* picker() const { return picker_; }
    QWidget* removalSection() const { return removal_; }
    QPushButton* removeButton() const { return remove_; }
    // The open removal question, if any.
    QMessageBox* removalQuestion() const { return question_; }

private:
    QWidget* buildTokenRow();
    void updateSubmit();
    void setReveal(bool reveal);
    void refreshStatus();
    void refreshDetails();

    AppState& state_;
    StatusPalette& palette_;
    bool revealing_ = false;
    FormSection* tokenSection_ = nullptr;
    QLineEdit* field_ = nullptr;
    QToolButton* reveal_ = nullptr;
    QPushButton* submit_ = nullptr;
    SymbolRow* status_ = nullptr;
    SymbolRow* expiry_ = nullptr;
    SymbolRow* storage_ = nullptr;
    SymbolRow* notices_ = nullptr;
    ProjectPicker* picker_ = nullptr;
    QWidget* removal_ = nullptr;
    QPushButton* remove_ = nullptr;
    QPointer<QMessageBox> question_;
};
