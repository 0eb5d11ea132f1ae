#pragma once

#include "core/keychain/SecretBackend.h"

#include <map>

// A secret store in memory that behaves like a keychain: adding over an existing item fails as a
// duplicate, reading a missing one fails as not found. Any copy can be told to fail its writes or
// reads with a given status.
class MemorySecretBackend final : public SecretBackend {
public:
    static constexpr int duplicateItem = -25299;
    static constexpr int itemNotFound = -25300;

    std::map<KeychainMode, QByteArray> items;
    std::map<KeychainMode, QString> labels;
    std::map<KeychainMode, int> failingWrites;
    std::map<KeychainMode, int> failingReads;
    std::map<int, QString> messages;

    int addItem(KeychainMode copy, const QByteArray& data, const QString& label) override {
        if (const auto failing = failingWrites.find(copy); failing != failingWrites.end())
            return failing->second;
        if (items.count(copy))
            return duplicateItem;
        items[copy] = data;
        labels[copy] = label;
        return 0;
    }

    int deleteItems(KeychainMode copy) override { return items.erase(copy) ? 0 : itemNotFound; }

    Match copyMatching(KeychainMode copy) override {
        if (const auto failing = failingReads.find(copy); failing != failingReads.end())
            return {failing->second, {}};
        const auto found = items.find(copy);
        if (found == items.end())
            return {itemNotFound, {}};
        return {0, found->second};
    }

    bool isNoItem(int status) const override { return status == itemNotFound; }

    std::optional<QString> errorMessage(int status) const override {
        const auto found = messages.find(status);
        if (found == messages.end())
            return std::nullopt;
        return found->second;
    }
};
