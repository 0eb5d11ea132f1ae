#pragma once

#include <QCoro/QCoroTask>
#include <optional>
#include <utility>

// Runs the event loop until `task` finishes and answers its result. QCoro::waitFor needs a
// default-constructible result, which RequestResult and other Expected values are not.
template <typename T> T awaitTask(QCoro::Task<T> task) {
    std::optional<T> result;
    const auto run = [](QCoro::Task<T> inner, std::optional<T>& out) -> QCoro::Task<> {
        out.emplace(co_await std::move(inner));
    };
    QCoro::waitFor(run(std::move(task), result));
    return std::move(*result);
}
