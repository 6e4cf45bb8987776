// Tables that give a numeric result its words, and their lookup.
#pragma once

#include <cstddef>
#include <cstdint>

// One row: a result and the words logged for it.
struct CodeText {
    std::intptr_t code;
    const wchar_t* text;
};

// The words of the first row for `code`, or `otherwise` when no row has it.
template <std::size_t Rows>
const wchar_t* TextForCode(const CodeText (&table)[Rows], std::intptr_t code,
                           const wchar_t* otherwise) {
    for (const CodeText& row : table)
        if (row.code == code)
            return row.text;
    return otherwise;
}
