#pragma once

#include <type_traits>

namespace installer {

/// Whether nullptr is one of the arguments of a call.
template <class... Arguments>
concept NullAmong = (std::is_null_pointer_v<std::remove_cvref_t<Arguments>> || ...);

}  // namespace installer

/// The deleted form of an operation for calls with nullptr among their arguments: a text made from
/// it would end the process, so such a call does not compile. Takes what stands before the
/// parameters, such as "static void getVolume".
#define HOTFIX_DELETED_FOR_NULL(operation)                                               \
  operation(auto&&... arguments) requires ::installer::NullAmong<decltype(arguments)...> \
  = delete
