#pragma once

#include <gio/gio.h>
#include <libsecret/secret.h>
#include <memory>

// Owning pointers for the GLib and libsecret values the Secret Service backend holds.

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;

struct GHashTableUnref {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using GHashTablePtr = std::unique_ptr<GHashTable, GHashTableUnref>;

struct SecretValueUnref {
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};
using SecretValuePtr = std::unique_ptr<SecretValue, SecretValueUnref>;

struct GObjectListFree {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using GObjectListPtr = std::unique_ptr<GList, GObjectListFree>;

struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};
using GCharPtr = std::unique_ptr<gchar, GFree>;
