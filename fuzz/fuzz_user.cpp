// /v2/user bodies.
#include "FuzzCheck.h"
#include "core/vercel/VercelDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto decoded = decodeResponse<UserResponse>(body)) {
        const VercelUser& user = decoded->user;
        // The personal scope's slug and the account name shown once connected.
        (void)(user.username + user.name.value_or(QString()) + user.email.value_or(QString()) +
               user.defaultTeamId.value_or(QString()));
    }
    return 0;
}
