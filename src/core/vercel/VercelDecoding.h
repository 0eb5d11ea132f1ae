#pragma once

#include "core/vercel/VercelRecords.h"

#include <QByteArray>
#include <optional>

// Strict decoding of a whole response body: a required field missing or null, or any field of
// the wrong JSON kind anywhere, fails the whole body (absent result).
template <typename T> std::optional<T> decodeResponse(const QByteArray& body);

template <> std::optional<DeploymentsResponse> decodeResponse(const QByteArray& body);
template <> std::optional<ProjectsResponse> decodeResponse(const QByteArray& body);
template <> std::optional<TeamsResponse> decodeResponse(const QByteArray& body);
template <> std::optional<UserResponse> decodeResponse(const QByteArray& body);
template <> std::optional<TokenInfoResponse> decodeResponse(const QByteArray& body);
template <> std::optional<BuildEventList> decodeResponse(const QByteArray& body);
// One deployment as /v13/deployments/{id} and the write endpoints answer it: the bare object.
template <> std::optional<VercelDeployment> decodeResponse(const QByteArray& body);
