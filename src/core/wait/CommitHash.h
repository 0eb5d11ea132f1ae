#pragma once

#include <QString>
#include <optional>

// A commit named by its hash: whole (40 hex digits, or 64 in a SHA-256 repository) or cut short
// to at least 7, as `git log --oneline` prints it.
class CommitHash {
public:
    // Surrounding spaces are dropped and letters lowered; anything else that is not hex fails.
    static std::optional<CommitHash> parse(const QString& text);

    const QString& text() const { return text_; }
    QString shortText() const { return text_.left(7); }
    // A whole hash can be handed to Vercel as a filter; a short one can only be matched.
    bool isWhole() const { return text_.size() == 40 || text_.size() == 64; }
    // Whether `sha`, as a deployment records it, names this commit.
    bool matches(const QString& sha) const;

private:
    explicit CommitHash(QString text) : text_(std::move(text)) {}
    QString text_;
};
