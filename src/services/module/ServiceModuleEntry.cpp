// The entry of the services module. The module carries the services' code but not the core:
// the few core functions that code calls are answered by the program that loaded it.
#include "core/common/Language.h"
#include "services/ServiceTable.h"

namespace {

const ServiceHost* host = nullptr;

} // namespace

QString Language::text(const char* english, const char* french) {
    return host->text(english, french);
}

extern "C" Q_DECL_EXPORT const ServiceTable* quillonServiceTable(const ServiceHost* loader) {
    host = loader;
    return &linkedServiceTable();
}
