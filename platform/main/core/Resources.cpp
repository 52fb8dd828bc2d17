#include <kesplatform/Resources.h>

#include <kesplatform/CorvinaException.h>

#include <QFile>
#include <QFileInfo>

#ifdef KESPLATFORM_STATIC_DEFINE
int qInitResources_schemas();
#endif

namespace {

#ifdef KESPLATFORM_STATIC_DEFINE
/// The schemas register themselves, but a linker takes only what is referred to from an archive.
[[gnu::used]] int (*const s_registration)() = &qInitResources_schemas;
#endif

constexpr const char16_t* c_ownDirectory = u":/kesplatform/";
constexpr std::uint32_t c_missingResource = 0x7C1D52E9;

QString ResourcePath(const TString& name)
{
    return name.startsWith(u":") ? name : c_ownDirectory + name;
}

} // namespace

TResource::TResource(const TString& name) : m_name(name) {}

bool TResource::isValid() const
{
    // A directory of the resource tree exists too, but holds no bytes.
    return QFileInfo(ResourcePath(m_name)).isFile();
}

std::string TResource::GetBytes() const
{
    QFile file(ResourcePath(m_name));
    if (!isValid() || !file.open(QIODevice::ReadOnly)) {
        throw CorvinaException(
            u"Resource '" + m_name + u"' not found.",
            TError::ErrorInfo(
                CorvinaError(c_missingResource, u"CorvinaException_MissingResource_0x7C1D52E9"), 1,
                2));
    }
    return file.readAll().toStdString();
}

UTF8StringTResource::UTF8StringTResource(const TString& name)
    : m_text(TString::fromStdString(TResource(name).GetBytes()))
{
}

ResourceRegistrationCache& ResourceRegistrationCache::GetInstance()
{
    static ResourceRegistrationCache s_instance;
    return s_instance;
}

TString ResourceRegistrationCache::GetResourcePath(const TString& alias,
                                                   const TString& variant) const
{
    const std::lock_guard lock(m_mutex);
    auto found = m_names.find({alias, variant});
    if (found == m_names.end() && !variant.IsEmpty())
        found = m_names.find({alias, TString()});
    return found == m_names.end() ? alias : found->second;
}

void ResourceRegistrationCache::Register(const TString& alias, const TString& variant,
                                         const TString& name)
{
    const std::lock_guard lock(m_mutex);
    m_names.insert_or_assign({alias, variant}, name);
}

void ResourceRegistrationCache::Unregister(const TString& alias, const TString& variant)
{
    const std::lock_guard lock(m_mutex);
    m_names.erase({alias, variant});
}
