#ifndef PREDSEL_EMBEDDED_OUTPUT_COMPOSITETEXT_H
#define PREDSEL_EMBEDDED_OUTPUT_COMPOSITETEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace embedded {

/// The text of a template.
/// - ^1 to ^9 stand for the arguments in order.
/// - [first:rest:]n lays out list n: %1 in `first` stands for its first element, ^1 in `rest` for
///   each later one. An empty list leaves nothing.
/// - "\n", a backslash and an n, is a line break.
/// What refers to an argument or list that is not there stays as it is written.
std::string CompositeText(std::string_view text, const std::vector<std::string>& arguments,
                          const std::vector<std::vector<std::string>>& lists = {});

/// True for a template that is one list and nothing else.
bool IsListTemplate(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_COMPOSITETEXT_H
