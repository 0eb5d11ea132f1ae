#include "core/vercel/ProjectRef.h"

size_t qHash(const ProjectRef& ref, size_t seed) {
    // The presence marker keeps an absent team id apart from an empty one.
    return qHashMulti(seed, ref.id, ref.name, ref.teamId.has_value(),
                      ref.teamId.value_or(QString()), ref.scopeSlug);
}
