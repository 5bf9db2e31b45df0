// memory.cpp — the SM_ memory services of the reference host: blocks with a
// header (size, kind, links in a list of live blocks per kind), the end of a
// host operation, the memory counters and allocation fault injection.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>

#include <qxsys/qxsys.h>

namespace
{

constexpr std::uint32_t live_magic = 0x51585359u; // "QXSY"
constexpr std::uint32_t dead_magic = 0x44454144u; // "DEAD"

// Sits just before every payload; its size keeps the payload aligned for
// any type.
struct alignas(alignof(std::max_align_t)) Header {
    std::uint32_t magic;
    std::uint32_t kind; // qxsys_block_kind
    std::size_t size;   // payload bytes
    Header *prev;
    Header *next;
};
static_assert(sizeof(Header) % alignof(std::max_align_t) == 0, "payload alignment");

constexpr std::size_t max_payload = SIZE_MAX - sizeof(Header);

// Live blocks of one kind: a circular list around a sentinel.
struct Pool {
    Header head;
    std::size_t blocks;
    std::size_t bytes;
};

Pool transient_pool = {{0, 0, 0, &transient_pool.head, &transient_pool.head}, 0, 0};
Pool persistent_pool = {{0, 0, 0, &persistent_pool.head, &persistent_pool.head}, 0, 0};

unsigned long calls = 0;       // allocation calls ever made
unsigned long allocations = 0; // successful ones
unsigned long failures = 0;    // failed ones, injected or real
bool armed = false;            // an injected failure is pending
unsigned long fail_at = 0;     // value of calls at which it happens

Pool &pool_of(std::uint32_t kind)
{
    return kind == QXSYS_PERSISTENT ? persistent_pool : transient_pool;
}

void *payload_of(Header *h) { return h + 1; }

[[noreturn]] void bad_block(const char *service, const void *block)
{
    std::fprintf(stderr, "qxsys: %s of a block that is not a live libqxsys block (%p)\n", service,
                 block);
    std::fflush(stderr);
    std::abort();
}

// Header of a live block; anything else is a program bug.
Header *header_of(const void *block, const char *service)
{
    Header *h = static_cast<Header *>(const_cast<void *>(block)) - 1;
    if (h->magic != live_magic || (h->kind != QXSYS_TRANSIENT && h->kind != QXSYS_PERSISTENT)) {
        bad_block(service, block);
    }
    return h;
}

void link(Header *h, std::uint32_t kind, std::size_t bytes)
{
    Pool &pool = pool_of(kind);
    h->magic = live_magic;
    h->kind = kind;
    h->size = bytes;
    h->prev = pool.head.prev;
    h->next = &pool.head;
    pool.head.prev->next = h;
    pool.head.prev = h;
    ++pool.blocks;
    pool.bytes += bytes;
}

void unlink(Header *h)
{
    Pool &pool = pool_of(h->kind);
    h->prev->next = h->next;
    h->next->prev = h->prev;
    --pool.blocks;
    pool.bytes -= h->size;
    h->magic = dead_magic;
}

// Counts an allocation call; true when it is the one armed to fail.
bool count_call()
{
    ++calls;
    if (armed && calls == fail_at) {
        armed = false;
        return true;
    }
    return false;
}

// A failed allocation: counted, reported when transient (the report may not
// return), then NULL.
void *fail(std::uint32_t kind, std::size_t bytes)
{
    ++failures;
    if (kind == QXSYS_TRANSIENT) {
        const int shown =
            bytes > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(bytes);
        ERROR_internal("qxsys_memory", __LINE__, "Failed to allocate %d bytes", shown);
    }
    return nullptr;
}

// Blocks this large (a band of a spline through 10^5 points and more) are
// asked to be backed by transparent huge pages, where the system offers them
// on request: their first touch then costs one fault per 2 MiB instead of
// one per 4 KiB page. Only whole huge pages inside the block are advised;
// the advice changes no content and a refusal is harmless.
constexpr std::size_t huge_block = std::size_t{8} << 20;

void back_with_huge_pages(void *raw, std::size_t size)
{
    constexpr std::uintptr_t huge_page = std::uintptr_t{2} << 20;
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t first = (begin + huge_page - 1) & ~(huge_page - 1);
    const std::uintptr_t last = (begin + size) & ~(huge_page - 1);
    if (first < last) (void)madvise(reinterpret_cast<void *>(first), last - first, MADV_HUGEPAGE);
}

void *allocate(std::uint32_t kind, std::size_t bytes, bool zero, bool overflow)
{
    if (count_call() || overflow || bytes > max_payload) return fail(kind, bytes);
    void *raw = zero ? std::calloc(1, sizeof(Header) + bytes) : std::malloc(sizeof(Header) + bytes);
    if (raw == nullptr) return fail(kind, bytes);
    if (bytes >= huge_block) back_with_huge_pages(raw, sizeof(Header) + bytes);
    Header *h = static_cast<Header *>(raw);
    link(h, kind, bytes);
    ++allocations;
    return payload_of(h);
}

void *allocate_array(std::uint32_t kind, std::size_t count, std::size_t size)
{
    const bool overflow = size != 0 && count > SIZE_MAX / size;
    return allocate(kind, overflow ? SIZE_MAX : count * size, true, overflow);
}

} // namespace

// ---- the host services ----------------------------------------------------

QXMATH_HOST void *SM_alloc(size_t bytes) { return allocate(QXSYS_TRANSIENT, bytes, false, false); }

QXMATH_HOST void *SM_calloc(size_t count, size_t size)
{
    return allocate_array(QXSYS_TRANSIENT, count, size);
}

QXMATH_HOST void *SM_calloc_persistent(size_t count, size_t size)
{
    return allocate_array(QXSYS_PERSISTENT, count, size);
}

QXMATH_HOST void *SM_realloc(void *block, size_t bytes)
{
    if (block == nullptr) return SM_alloc(bytes);
    Header *h = header_of(block, "SM_realloc");
    const std::uint32_t kind = h->kind;
    if (count_call() || bytes > max_payload) return fail(kind, bytes);
    const std::size_t old_size = h->size;
    Header *moved = static_cast<Header *>(std::realloc(h, sizeof(Header) + bytes));
    if (moved == nullptr) return fail(kind, bytes); // the block is untouched
    // The neighbours may still point at the old place.
    moved->prev->next = moved;
    moved->next->prev = moved;
    moved->size = bytes;
    Pool &pool = pool_of(kind);
    pool.bytes = pool.bytes - old_size + bytes;
    ++allocations;
    return payload_of(moved);
}

QXMATH_HOST void SM_free(void *block)
{
    if (block == nullptr) return;
    Header *h = header_of(block, "SM_free");
    unlink(h);
    std::free(h);
}

QXMATH_HOST size_t SM_length(const void *block)
{
    if (block == nullptr) return 0;
    return header_of(block, "SM_length")->size;
}

// ---- controls ---------------------------------------------------------------

QXSYS_API void qxsys_memory_stats_get(qxsys_memory_stats *stats)
{
    if (stats == nullptr) return;
    stats->transient_blocks = transient_pool.blocks;
    stats->transient_bytes = transient_pool.bytes;
    stats->persistent_blocks = persistent_pool.blocks;
    stats->persistent_bytes = persistent_pool.bytes;
    stats->allocations = allocations;
    stats->failures = failures;
}

QXSYS_API size_t qxsys_live_blocks(void) { return transient_pool.blocks + persistent_pool.blocks; }

QXSYS_API qxsys_block_kind qxsys_block_kind_of(const void *block)
{
    if (block == nullptr) return static_cast<qxsys_block_kind>(0);
    return static_cast<qxsys_block_kind>(header_of(block, "qxsys_block_kind_of")->kind);
}

QXSYS_API size_t qxsys_end_operation(void)
{
    std::size_t freed = 0;
    Header *const head = &transient_pool.head;
    Header *h = head->next;
    while (h != head) {
        Header *next = h->next;
#ifndef NDEBUG
        std::memset(static_cast<void *>(h), 0xDB, sizeof(Header) + h->size);
#else
        h->magic = dead_magic;
#endif
        std::free(h);
        ++freed;
        h = next;
    }
    head->prev = head;
    head->next = head;
    transient_pool.blocks = 0;
    transient_pool.bytes = 0;
    return freed;
}

QXSYS_API void qxsys_fail_allocation(long n)
{
    armed = n > 0;
    fail_at = armed ? calls + static_cast<unsigned long>(n) : 0;
}

QXSYS_API unsigned long qxsys_allocation_calls(void) { return calls; }
