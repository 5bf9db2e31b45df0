// callback.cpp — change notification of the reference host: the table of
// registered callbacks run by CALLBACK_call_list, and the reason mapping
// behind QX_REASON_ask_reason_number.
#include <climits>
#include <cstring>

#include <qxsys/qxsys.h>

namespace qxsys_detail
{
__attribute__((visibility("hidden"))) void callbacks_reset();
}

namespace
{

struct Registration {
    int handle;
    int reason;
    qxsys_callback fn;
    void *user;
};

// Registrations in registration order, packed at the front.
Registration table[QXSYS_CALLBACK_MAX];
int table_size = 0;
int last_handle = 0; // handles are never reused while the counter lasts

struct Mapping {
    int id;
    int number;
};

constexpr int mapping_max = 256;
Mapping mappings[mapping_max];
int mapping_size = 0;

int find(int handle)
{
    for (int i = 0; i < table_size; ++i) {
        if (table[i].handle == handle) return i;
    }
    return -1;
}

int next_handle()
{
    do {
        last_handle = last_handle == INT_MAX ? 1 : last_handle + 1;
    } while (find(last_handle) >= 0);
    return last_handle;
}

} // namespace

void qxsys_detail::callbacks_reset()
{
    table_size = 0;
    mapping_size = 0;
}

// ---- the host services ----------------------------------------------------

QXMATH_HOST int QX_REASON_ask_reason_number(int reason_id)
{
    for (int i = 0; i < mapping_size; ++i) {
        if (mappings[i].id == reason_id) return mappings[i].number;
    }
    return reason_id;
}

// Runs the callbacks registered for the reason when the call starts, in
// registration order. A callback may register or unregister: new ones wait
// for the next call, removed ones are not run. The handles to run are taken
// first, so a callback that unwinds leaves nothing half done.
QXMATH_HOST void CALLBACK_call_list(int reason, void *data)
{
    int due[QXSYS_CALLBACK_MAX];
    int n = 0;
    for (int i = 0; i < table_size; ++i) {
        if (table[i].reason == reason) due[n++] = table[i].handle;
    }
    for (int k = 0; k < n; ++k) {
        const int i = find(due[k]);
        if (i < 0) continue;
        const qxsys_callback fn = table[i].fn;
        void *const user = table[i].user;
        fn(reason, data, user);
    }
}

// ---- controls ---------------------------------------------------------------

QXSYS_API int qxsys_callback_register(int reason, qxsys_callback fn, void *user)
{
    if (fn == nullptr || table_size == QXSYS_CALLBACK_MAX) return 0;
    const int handle = next_handle();
    table[table_size++] = Registration{handle, reason, fn, user};
    return handle;
}

QXSYS_API int qxsys_callback_unregister(int handle)
{
    const int i = handle > 0 ? find(handle) : -1;
    if (i < 0) return 0;
    std::memmove(&table[i], &table[i + 1],
                 static_cast<size_t>(table_size - i - 1) * sizeof table[0]);
    --table_size;
    return 1;
}

QXSYS_API void qxsys_set_reason_number(int reason_id, int number)
{
    for (int i = 0; i < mapping_size; ++i) {
        if (mappings[i].id == reason_id) {
            mappings[i].number = number;
            return;
        }
    }
    if (mapping_size < mapping_max) mappings[mapping_size++] = Mapping{reason_id, number};
}
