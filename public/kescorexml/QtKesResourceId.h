#pragma once

#include <cstdint>

/// The suite's numeric names of its compiled-in resources. The values are drawn from the whole
/// 32-bit range, so that new ones never meet; a value that is not listed here names a resource that
/// belongs to another module, and this library knows no alias for it. Safe to use from several
/// threads.
enum class QtKesResourceId : std::uint32_t
{
    FileformatZapXsd = 0xc0e65bd0,
    FileformatZapXsd_10_2 = 0xa3dc1cc9,
    FileformatZapXsd_10_3 = 0xcc49fddf,
    FileformatZapXsd_10_4 = 0xdda5fdb7,
    FileformatZapXsd_10_5 = 0x1ecb88c5,
    FileformatZebXsd = 0x0ee78796,
    FileformatZebXsd_10_2 = 0x72ab4c3c,
    FileformatZebXsd_10_3 = 0x889d0897,
    FileformatZebXsd_10_4 = 0x166dedb5,
    FileformatZebXsd_10_5 = 0x7879ef8f,
    FileformatZilXsd = 0x98fc1618,
    FileformatZilXsd_10_2 = 0x1c4fdca2,
    FileformatZilXsd_10_3 = 0x8597e502,
    FileformatZilXsd_10_4 = 0xc0eacc50,
    FileformatZilXsd_10_5 = 0x0bce4c23,
    FileformatZokXsd = 0xd724572f,
    FileformatZokXsd_10_2 = 0xc090d8d4,
    FileformatZokXsd_10_3 = 0x15dc543c,
    FileformatZokXsd_10_4 = 0xa1fbae81,
    FileformatZokXsd_10_5 = 0x0d9d12d3,
    FileformatZunXsd = 0x963f056d,
    FileformatZyqXsd = 0x8fcabd70,
    FileformatZaxXsd = 0x808046be,
    FileformatZexXsd = 0x8b54af85,
    FileformatZixoXsd = 0x11868937,
    FileformatUserXsd = 0x63cabd5b,
    FileformatXmlXsd = 0x8b50c6ea,
    FileformatXhtmlDtd = 0x461a4bb6,
    FileformatOauthConfigXsd = 0x5c37c388,
    FileformatDynamicConnectorsXsd = 0xe530aa73,
    FileformatConnectorPluginManifestXsd = 0x8a929098,
    FileformatConnectorPluginResourcesXsd = 0x2e5bd5c0,
    FileformatConnectorPluginConnMetadataXsd = 0x05c99ea2,
};
