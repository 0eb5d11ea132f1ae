#include "core/wait/CommitHash.h"

#include <algorithm>

std::optional<CommitHash> CommitHash::parse(const QString& text) {
    const QString hash = text.trimmed().toLower();
    const bool hex = std::all_of(hash.begin(), hash.end(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
    });
    if (!hex || hash.size() < 7 || hash.size() > 64)
        return std::nullopt;
    return CommitHash(hash);
}

bool CommitHash::matches(const QString& sha) const {
    return sha.size() >= text_.size() && sha.startsWith(text_, Qt::CaseInsensitive);
}
