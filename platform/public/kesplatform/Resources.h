#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <map>
#include <mutex>
#include <string>

/// A compiled-in resource, found by the name that an alias resolves to: a path of Qt's resource
/// system, which begins with ":", or else the bare name of one of the platform's own resources.
/// A plain value.
class KESPLATFORM_EXPORT TResource
{
public:
    /// Looks for nothing yet.
    explicit TResource(const TString& name);

    /// The name that it was made with.
    [[nodiscard]] const TString& GetName() const noexcept { return m_name; }
    /// Whether there is such a resource.
    [[nodiscard]] bool isValid() const;
    /// The bytes. A missing resource is a CorvinaException that names it.
    [[nodiscard]] std::string GetBytes() const;

private:
    TString m_name;
};

/// A compiled-in resource read as UTF-8 text. A plain value.
class KESPLATFORM_EXPORT UTF8StringTResource
{
public:
    /// Reads the resource whole. A missing resource is a CorvinaException that names it.
    explicit UTF8StringTResource(const TString& name);

    /// The text.
    [[nodiscard]] const TString& GetString() const noexcept { return m_text; }

private:
    TString m_text;
};

/// Maps an alias, with an optional variant (a language, a resolution), to a resource name.
/// Safe to use from several threads.
class KESPLATFORM_EXPORT ResourceRegistrationCache
{
public:
    /// The only one, which lives as long as the process.
    [[nodiscard]] static ResourceRegistrationCache& GetInstance();

    /// The registered name, else that of the alias without variant, else the alias itself.
    [[nodiscard]] TString GetResourcePath(const TString& alias, const TString& variant) const;
    /// Registers or replaces a name.
    void Register(const TString& alias, const TString& variant, const TString& name);
    /// Forgets a name; does nothing when there is none.
    void Unregister(const TString& alias, const TString& variant);

private:
    ResourceRegistrationCache() = default;

    mutable std::mutex m_mutex;
    std::map<std::pair<TString, TString>, TString> m_names;
};
