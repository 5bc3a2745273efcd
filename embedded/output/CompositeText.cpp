#include "embedded/output/CompositeText.h"

#include <cstddef>
#include <optional>

namespace embedded {

namespace {

bool IsNumberDigit(char c) { return c >= '1' && c <= '9'; }

/// A [first:rest:]n at the beginning of a text.
struct ListForm {
    std::string_view fFirst;
    std::string_view fRest;
    std::size_t fList = 0;    // from 0
    std::size_t fLength = 0;  // of the whole form
};

std::optional<ListForm> ReadListForm(std::string_view text) {
    if (text.empty() || text.front() != '[') return std::nullopt;
    const std::size_t end = text.find(":]");
    if (end == std::string_view::npos || end + 2 >= text.size() || !IsNumberDigit(text[end + 2]))
        return std::nullopt;
    const std::size_t middle = text.find(':');
    if (middle >= end) return std::nullopt;
    return ListForm{text.substr(1, middle - 1), text.substr(middle + 1, end - middle - 1),
                    static_cast<std::size_t>(text[end + 2] - '1'), end + 3};
}

/// Copies text with "\n" as line breaks and mark 1 to 9 as the arguments.
void AppendFilled(std::string& out, std::string_view text, char mark,
                  const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '\\' && next == 'n') {
            out += '\n';
            ++i;
        } else if (text[i] == mark && IsNumberDigit(next) &&
                   static_cast<std::size_t>(next - '1') < arguments.size()) {
            out += arguments[static_cast<std::size_t>(next - '1')];
            ++i;
        } else {
            out += text[i];
        }
    }
}

void AppendList(std::string& out, const ListForm& form, const std::vector<std::string>& elements) {
    for (std::size_t i = 0; i < elements.size(); ++i)
        AppendFilled(out, i == 0 ? form.fFirst : form.fRest, i == 0 ? '%' : '^', {elements[i]});
}

}  // namespace

std::string CompositeText(std::string_view text, const std::vector<std::string>& arguments,
                          const std::vector<std::vector<std::string>>& lists) {
    std::string out;
    while (!text.empty()) {
        if (const auto form = ReadListForm(text); form && form->fList < lists.size()) {
            AppendList(out, *form, lists[form->fList]);
            text.remove_prefix(form->fLength);
            continue;
        }
        const std::size_t length = text.find('[', 1);  // a plain '[' goes with what follows it
        AppendFilled(out, text.substr(0, length), '^', arguments);
        text.remove_prefix(length == std::string_view::npos ? text.size() : length);
    }
    return out;
}

bool IsListTemplate(std::string_view text) {
    const auto form = ReadListForm(text);
    return form && form->fLength == text.size();
}

}  // namespace embedded
