#pragma once

class DOM;

/// What elements and documents demand of those who call them. An assertion names the file and the
/// line that noticed it, and callers know the files as DOMElement and DOM; so each is thrown there,
/// in the last section, whichever source notices it.
namespace TreeAssertions {

/// The document, which the operation of that name needs.
DOM& RequireDocument(DOM* dom, const char16_t* operation);

[[noreturn]] void ThrowNoElement();
[[noreturn]] void ThrowOwnSubtree();
[[noreturn]] void ThrowNoChild();
[[noreturn]] void ThrowNoParent();
[[noreturn]] void ThrowNoParentToMoveFrom();
[[noreturn]] void ThrowNoParentToAdoptFrom();

[[noreturn]] void ThrowCaptionHasBeenRenamed();

} // namespace TreeAssertions
