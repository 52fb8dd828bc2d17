#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <boost/any.hpp>

/// What the calling thread knows of the session that it works for. Each thread has its own, until
/// the thread ends: in destructors of static objects there is no session, and none can be set.
/// The only header that needs Boost: who includes it has Boost's headers found.
/// Safe to use from several threads.
namespace CoreThreadContext {

/// Whether a session id is set; without one the thread works for nobody in particular.
[[nodiscard]] KESPLATFORM_EXPORT bool HasSessionId() noexcept;
/// The id, or an empty text.
[[nodiscard]] KESPLATFORM_EXPORT TString GetSessionId();
/// An empty id leaves the thread without session; its objects stay.
KESPLATFORM_EXPORT void SetSessionId(const TString& id);
/// Forgets the session id and every object.
KESPLATFORM_EXPORT void Clear() noexcept;

/// A copy of the object stored under a name, empty when there is none.
[[nodiscard]] KESPLATFORM_EXPORT boost::any GetObject(const TString& name);
/// Stores an object under a name, in place of what is there.
KESPLATFORM_EXPORT void SetObject(const TString& name, boost::any object);

} // namespace CoreThreadContext
