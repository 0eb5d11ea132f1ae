#pragma once

#include <utility>
#include <variant>

// A value or the error that stands in its place (std::expected arrives with C++23).
template <typename T, typename E> class Expected {
public:
    Expected(T value) : data_(std::in_place_index<0>, std::move(value)) {}
    Expected(E error) : data_(std::in_place_index<1>, std::move(error)) {}

    bool hasValue() const { return data_.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    const T& value() const& { return std::get<0>(data_); }
    T& value() & { return std::get<0>(data_); }
    T&& value() && { return std::get<0>(std::move(data_)); }
    const T* operator->() const { return &value(); }
    const T& operator*() const& { return value(); }

    const E& error() const { return std::get<1>(data_); }

private:
    std::variant<T, E> data_;
};
