// xml.cpp - reads the text in one pass, from one angle bracket to the next. A document lies in a
// few blocks of memory that are freed together.
#include "data/xml.hpp"

#include "data/text.hpp"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <string_view>
#include <utility>

namespace
{

/// A text of at most `size` - 1 bytes; the rest is dropped.
template <std::size_t size> struct bounded_text {
    char bytes[size];
    std::size_t length = 0;

    std::string_view view() const
    {
        return {bytes, length};
    }
    void append(std::string_view added)
    {
        length += added.copy(bytes + length, size - 1 - length);
    }
};

/// A stretch of memory that nodes fill from the front and texts from the back. A document's first
/// block begins with its first node, so that the document's address is enough to release them all.
struct block {
    block* next;           // null in the last one
    std::size_t nodes_end; // both count bytes from the end of this record
    std::size_t texts_begin;

    char* bytes()
    {
        return reinterpret_cast<char*>(this + 1);
    }
};
static_assert(sizeof(block) % alignof(xml_node) == 0);

/// Bytes in a block. malloc serves larger requests than this and its record slowly, which matters
/// for the short documents of packets.
constexpr std::size_t block_bytes = 1032 - sizeof(block);

/// A large document has larger blocks: its nodes lie closer together, and are visited quicker.
constexpr std::size_t max_block_bytes = 64UL * 1024;
constexpr std::size_t growth_divisor = 8;

/// What malloc adds to a request at most.
constexpr std::size_t malloc_overhead_bytes = 24;

/// Documents of so many blocks leave a heap worth giving back.
constexpr int large_document_blocks = 60;

struct reader {
    std::size_t memory_taken = 0;        // bytes of the blocks
    std::size_t memory_left = 0;         // bytes that blocks may still take
    std::size_t comparisons_left = 0;    // of end tags with places that are not theirs
    block* memory = nullptr;             // the last block
    xml_node* current = nullptr;         // the latest node; nameless while it waits for a start tag
    bool in_tag = true;                  // a "<" still waits for its ">", first the declaration's
    std::string_view tag;                // the latest tag, without brackets
    const char* text_begin = nullptr;    // after the latest tag
    bool has_stray_brackets = false;     // a ">" has come since, which is no text
    bounded_text<xml_path_limit> path;   // names of the open elements
    bounded_text<xml_text_limit> joined; // a text put together from its pieces
};

/// Makes a block, if the text allows it. Null, with errno set, when out of memory.
block* make_block(reader& state, std::size_t size)
{
    const std::size_t taken = sizeof(block) + size + malloc_overhead_bytes;
    if (taken > state.memory_left) {
        errno = ENOMEM;
        return nullptr;
    }
    auto* made = static_cast<block*>(std::malloc(sizeof(block) + size));
    if (made == nullptr)
        return nullptr;
    state.memory_left -= taken;
    state.memory_taken += taken;
    *made = {nullptr, 0, size};
    return made;
}

std::size_t choose_block_bytes(const reader& state)
{
    return std::clamp(state.memory_taken / growth_divisor, block_bytes, max_block_bytes);
}

/// Finds a block with `size` free bytes: the last one, or a new one. Null when out of memory.
block* find_block(reader& state, std::size_t size)
{
    block* last = state.memory;
    if (last->texts_begin - last->nodes_end >= size)
        return last;
    last->next = make_block(state, std::max(size, choose_block_bytes(state)));
    if (last->next != nullptr)
        state.memory = last->next;
    return last->next;
}

xml_node* make_node(reader& state)
{
    block* from = find_block(state, sizeof(xml_node));
    if (from == nullptr)
        return nullptr;
    char* place = from->bytes() + from->nodes_end;
    from->nodes_end += sizeof(xml_node);
    return new (place) xml_node{};
}

/// Memory for a text of `size` bytes, terminator included. Null when out of memory.
char* allocate_text(reader& state, std::size_t size)
{
    block* from = find_block(state, size);
    if (from == nullptr)
        return nullptr;
    from->texts_begin -= size;
    return from->bytes() + from->texts_begin;
}

char* put_text(char* place, std::string_view bytes)
{
    place[bytes.copy(place, bytes.size())] = '\0';
    return place;
}

/// A hash of a text: its length and two of its bytes, those in which paths tend to differ.
std::uint32_t hash_of(std::string_view text)
{
    if (text.empty())
        return 0;
    const std::size_t middle = static_cast<unsigned char>(text[text.size() / 2]);
    const std::size_t last = static_cast<unsigned char>(text.back());
    return static_cast<std::uint32_t>(text.size() << 16 | middle << 8 | last);
}

/// Gives the waiting node the newly opened element's name and path. False when out of memory; the
/// node then has neither, so that a node with a path always has a name.
bool name_node(reader& state, std::string_view name)
{
    const std::string_view path = state.path.view();
    // A name is the end of its path, unless that one was cut.
    const std::size_t name_size = path.ends_with(name) ? 0 : name.size() + 1;
    char* place = allocate_text(state, name_size + path.size() + 1);
    if (place == nullptr)
        return false;
    xml_node& node = *state.current;
    node.path = put_text(place + name_size, path);
    node.name = name_size > 0 ? put_text(place, name) : node.path + path.size() - name.size();
    node.name_hash = hash_of(name);
    node.path_hash = hash_of(path);
    return true;
}

/// The same text without the ">" in it, which do not belong to it.
std::string_view drop_brackets(reader& state, std::string_view text)
{
    state.joined.length = 0;
    while (!text.empty()) {
        const std::string_view run = text.substr(0, text.find('>'));
        state.joined.append(run);
        text.remove_prefix(std::min(run.size() + 1, text.size()));
    }
    return state.joined.view();
}

/// Stores the text up to `end` as the node's value. False when out of memory.
bool store_value(reader& state, const char* end)
{
    std::string_view text{state.text_begin, static_cast<std::size_t>(end - state.text_begin)};
    if (state.has_stray_brackets)
        text = drop_brackets(state, text);
    text = text.substr(0, xml_text_limit - 1);
    if (text.empty())
        return true;
    char* place = allocate_text(state, text.size() + 1);
    if (place == nullptr)
        return false;
    state.current->value = put_text(place, text);
    return true;
}

/// At a "<": stores the text so far and makes a new node wait for the next start tag. False when
/// out of memory.
bool begin_tag(reader& state, const char* at)
{
    state.in_tag = true;
    if (state.current->name == nullptr)
        return true;
    // The ">" that gave the node its name also began its text, and no "<" has come since.
    if (!store_value(state, at))
        return false;
    xml_node* next = make_node(state);
    if (next == nullptr)
        return false;
    state.current->next = next;
    state.current = next;
    return true;
}

/// Whether an end tag may be compared with one more place. If not, errno is ENOMEM.
bool has_comparison_left(reader& state)
{
    if (state.comparisons_left > 0) {
        --state.comparisons_left;
        return true;
    }
    errno = ENOMEM;
    return false;
}

/// Leaves the element `name`. A name that does not occur in the path changes nothing. False when
/// the end tags have been compared too often.
bool leave_element(reader& state, std::string_view name)
{
    // Kept on purpose: the end tag cuts the path at the first occurrence of its name, even within a
    // longer name. Test: xml_parse.follows_its_fixed_rules.
    const std::string_view path = state.path.view();
    const char first = name.empty() ? '\0' : name.front();
    std::size_t found = name.empty() ? 0 : path.find(first);
    while (found != std::string_view::npos && !path.substr(found).starts_with(name)) {
        if (!has_comparison_left(state))
            return false;
        found = path.find(first, found + 1);
    }
    if (found == std::string_view::npos)
        return true;
    const bool after_slash = found > 0 && path[found - 1] == '/';
    state.path.length = after_slash ? found - 1 : found;
    return true;
}

/// Gives the latest tag's name, without what follows a blank.
std::string_view find_name(const reader& state, bool closes)
{
    const std::string_view name = state.tag.substr(closes ? 1 : 0, xml_name_limit - 1);
    return name.substr(0, name.find(' '));
}

/// At a ">": opens or closes the element that the latest tag names. tag: where it began, if this
/// ">" ends it. False when out of memory.
bool end_tag(reader& state, const char* tag, const char* at)
{
    state.has_stray_brackets = !std::exchange(state.in_tag, false);
    if (!state.has_stray_brackets) {
        state.tag = {tag, static_cast<std::size_t>(at - tag)};
        state.text_begin = at + 1;
    }
    const bool closes = state.tag.starts_with('/');
    const std::string_view name = find_name(state, closes);
    // What an end tag has left once is no longer in the path.
    if (closes)
        return state.has_stray_brackets || leave_element(state, name);
    if (state.path.length > 0)
        state.path.append("/");
    state.path.append(name);
    if (state.current->name != nullptr)
        return true;
    return name_node(state, name);
}

/// The first angle bracket from `at` on, or `end`. The two kinds differ in one bit, so that a
/// single test finds either of them among eight bytes.
const char* find_bracket(const char* at, const char* end)
{
    constexpr std::uint64_t each_byte = 0x0101010101010101;
    for (; end - at >= 8; at += 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, at, sizeof bytes);
        const std::uint64_t other = (bytes & each_byte * 0xFD) ^ each_byte * '<';
        const std::uint64_t found = (other - each_byte) & ~other & each_byte * 0x80;
        if (found == 0)
            continue;
        if constexpr (std::endian::native == std::endian::little)
            return at + std::countr_zero(found) / 8;
        break;
    }
    while (at != end && *at != '<' && *at != '>')
        ++at;
    return at;
}

/// Reads from the declaration's ">" on. That ">" ends an empty tag, which makes the first node.
void read_document(reader& state, const char* at, const char* end)
{
    while (true) {
        const char* bracket = find_bracket(at, end);
        if (bracket == end)
            return;
        const bool goes_on =
            *bracket == '<' ? begin_tag(state, bracket) : end_tag(state, at, bracket);
        if (!goes_on)
            return;
        at = bracket + 1;
    }
}

} // namespace

xml_node* xml_parse(const char* text)
{
    const std::size_t length = std::strlen(text);
    reader state;
    state.memory_left = xml_memory_factor * length + xml_memory_base;
    state.comparisons_left = length + xml_comparisons_base;
    state.memory = make_block(state, block_bytes);
    if (state.memory == nullptr)
        return nullptr;
    xml_node* document = state.current = make_node(state);
    const char* declaration_end = std::strstr(text, "?>");
    if (declaration_end != nullptr)
        read_document(state, declaration_end + 1, text + length);
    return document;
}

char* xml_get(const xml_node* document, const char* key, bool by_name, bool want_copy)
{
    const std::string_view wanted{key};
    // The hash would cut the length of a key that is longer than any path.
    if (wanted.size() >= xml_path_limit)
        return nullptr;
    const std::uint32_t hash = hash_of(wanted);
    for (const xml_node* node = document; node != nullptr; node = node->next) {
        const char* compared = by_name ? node->name : node->path;
        // Texts with the same hash have the same length.
        if ((by_name ? node->name_hash : node->path_hash) == hash && compared != nullptr &&
            std::memcmp(compared, key, wanted.size()) == 0)
            return by_name || want_copy ? str_dup(node->value) : node->value;
    }
    return nullptr;
}

void xml_free(xml_node* document)
{
    if (document == nullptr)
        return;
    block* memory = reinterpret_cast<block*>(document) - 1;
    int count = 0;
    for (; memory != nullptr; ++count)
        std::free(std::exchange(memory, memory->next));
    if (count >= large_document_blocks)
        malloc_trim(0);
}
