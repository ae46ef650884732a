// prompt.cpp - see prompt.hpp.
#include "ui/prompt.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "ui/glyphs.hpp"
#include "ui/keys.hpp"
#include "ui/layout.hpp"
#include "ui/modal_box.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string_view>

namespace
{

constexpr long round_us = 10'000;
constexpr int box_height = 3;
constexpr int text_row = 1;
constexpr int text_column = 2;
constexpr int question_column = 2;
constexpr int bracket_cells = 4; // "[ " and " ]"
constexpr std::size_t max_name_cells = 64;
constexpr std::size_t name_tail_cells = 3; // of a name that is cut

struct prompt_state {
    std::string_view question;
    std::string_view hint;
    int size; // of text
    char* text;
    std::string_view name; // of who asks; empty: not shown
    int length = 0;
    std::time_t renewed_at = 0;
    modal_box box{};
};

enum class prompt_outcome : std::uint8_t { editing, accepted, cancelled, timed_out };

/// Cells inside the frame.
int choose_width(const prompt_state& prompt)
{
    const int for_question = static_cast<int>(prompt.question.size()) + bracket_cells + 1;
    const int for_hint = static_cast<int>(prompt.hint.size()) + bracket_cells;
    return std::max({prompt.size, for_question, for_hint});
}

void write_bracketed(const modal_box& box, int row, int column, std::string_view text)
{
    const int end = column + 2 + static_cast<int>(text.size());
    modal_box_write(box, row, column, colour::frame, true, "[ ");
    modal_box_write(box, row, column + 2, colour::frame, true, text);
    modal_box_write(box, row, end, colour::frame, true, " ]");
}

/// Cuts a name in its middle, for both ends of it tell hosts apart. The result lies in `cut` or is
/// the name itself.
std::string_view fit_name(std::string_view name, std::size_t cells, char (&cut)[max_name_cells])
{
    cells = std::min(cells, max_name_cells);
    if (name.size() <= cells)
        return name;
    const std::size_t head_cells = cells - name_tail_cells - 1;
    name.copy(cut, head_cells);
    cut[head_cells] = '~';
    name.copy(cut + head_cells + 1, name_tail_cells, name.size() - name_tail_cells);
    return {cut, cells};
}

/// Names who asks, to the left of the hint, if there is space for a part of the name at least.
void write_name(const prompt_state& prompt, int hint_column)
{
    const int cells = hint_column - 1 - question_column - bracket_cells;
    if (prompt.name.empty() || cells <= static_cast<int>(name_tail_cells))
        return;
    char cut[max_name_cells];
    write_bracketed(prompt.box, box_height - 1, question_column,
                    fit_name(prompt.name, static_cast<std::size_t>(cells), cut));
}

void draw(prompt_state& prompt)
{
    const int width = choose_width(prompt);
    const int hint_column = width - static_cast<int>(prompt.hint.size()) - bracket_cells;
    modal_box_fit(prompt.box, {width + 2, box_height, layout_box_column(width), layout_box_row()});
    if (!prompt.box.window)
        return;
    write_bracketed(prompt.box, 0, question_column, prompt.question);
    // Kept on purpose: a hint that fills the box covers its corner.
    // Test: prompt_box.is_wide_enough_for_its_hint_which_covers_the_corner.
    write_bracketed(prompt.box, box_height - 1, hint_column, prompt.hint);
    write_name(prompt, hint_column);
    const std::string_view text{prompt.text, static_cast<size_t>(prompt.length)};
    modal_box_write(prompt.box, text_row, text_column, colour::label, true, text);
    // Kept on purpose: after a full line the cursor stands on the frame, if the text is what makes
    // the box as wide as it is. Test: prompt_box.has_its_cursor_on_the_frame_when_its_line_is_full.
    glyphs_write_at(prompt.box.window.get(), text_row, text_column + prompt.length, "_");
    modal_box_show(prompt.box);
}

prompt_outcome edit(prompt_state& prompt, int key)
{
    if (key == key_escape)
        return prompt_outcome::cancelled;
    if (key == key_enter)
        return prompt_outcome::accepted;
    // Kept on purpose: a key that changes nothing renews the time too.
    // Test: prompt_of_a_key.keys_that_change_nothing_renew_the_time_too.
    prompt.renewed_at = std::time(nullptr);
    if (key == KEY_BACKSPACE) {
        if (prompt.length > 0)
            prompt.text[--prompt.length] = '\0';
    } else if (prompt.length < prompt.size - 1) {
        // Kept on purpose: function keys leave their low eight bits, like any other key.
        // Test: prompt_keys.enter_their_low_eight_bits_whatever_they_are.
        prompt.text[prompt.length++] = static_cast<char>(key & 0xFF);
    }
    return prompt_outcome::editing;
}

prompt_outcome run(prompt_state& prompt)
{
    const modal_wait waiting;
    prompt.renewed_at = std::time(nullptr);
    while (true) {
        const int key = key_read_for_prompt(app_state.server_pane);
        if (key != ERR) {
            const prompt_outcome outcome = edit(prompt, key);
            if (outcome != prompt_outcome::editing)
                return outcome;
        }
        draw(prompt);
        if (modal_time_is_over(prompt.renewed_at))
            return prompt_outcome::timed_out;
        pause_for(round_us);
    }
}

} // namespace

char* prompt_input(int size, const char* question, const char* hint, const char* preset,
                   prompt_asker* asker)
{
    heap_text text{static_cast<char*>(std::calloc(static_cast<size_t>(std::max(size, 1)), 1))};
    if (!text)
        return nullptr;
    prompt_state prompt{question, hint, size, text.get(),
                        asker != nullptr ? asker->name : std::string_view{}};
    if (preset != nullptr && size > 1) {
        prompt.length = std::min(static_cast<int>(std::strlen(preset)), size - 1);
        std::memcpy(text.get(), preset, static_cast<size_t>(prompt.length));
    }
    const prompt_outcome outcome = run(prompt);
    modal_box_close(prompt.box);
    if (asker != nullptr)
        asker->was_left_alone = outcome == prompt_outcome::timed_out;
    const bool has_answer = outcome == prompt_outcome::accepted && text.get()[0] != '\0';
    return has_answer ? text.release() : nullptr;
}
