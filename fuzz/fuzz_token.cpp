// /v5/user/tokens/current bodies: the expiry becomes a date.
#include "FuzzCheck.h"
#include "core/vercel/VercelDecoding.h"
#include "core/vercel/VercelTime.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto decoded = decodeResponse<TokenInfoResponse>(body);
    if (!decoded || !decoded->token.expiresAt)
        return 0;
    const QDateTime expiry = dateFromMilliseconds(*decoded->token.expiresAt);
    FUZZ_CHECK(expiry.isValid());
    (void)expiry.toString(Qt::ISODate);
    return 0;
}
