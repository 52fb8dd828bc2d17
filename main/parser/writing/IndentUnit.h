#pragma once

/// What a level of whole documents is indented by.
inline constexpr const char16_t* c_indentUnit = u"  ";
