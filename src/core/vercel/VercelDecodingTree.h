#pragma once

#include "core/vercel/VercelDecodingRapidJson.h"
#include <QByteArray>

// A body parsed by RapidJSON, accepted only where its reading cannot differ from Qt's parser:
// strict JSON, valid UTF-8, numbers converted as Qt converts them (integers that fit 64 bits kept
// exact, an overflow or underflow refused), no lone surrogate in a string, at most Qt's nesting.
// Whatever it refuses is left for Qt's parser to judge.
class StrictJsonTree {
public:
    bool parse(const QByteArray& body);
    const rapidjson::Value& root() const { return document_; }

private:
    QByteArray buffer_; // parsed in place: the tree's strings point into it
    rapidjson::Document document_;
};
