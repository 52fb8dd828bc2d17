#include "ExpatReader.h"

#include <expat.h>

#include <map>
#include <memory>
#include <utility>

namespace {

struct Reader
{
    ExpatReading reading;
    std::string text;

    void Flush()
    {
        if (!text.empty())
            reading.events.push_back("'" + std::exchange(text, {}) + "'");
    }
};

Reader& Get(void* data)
{
    return *static_cast<Reader*>(data);
}

void OnStart(void* data, const XML_Char* name, const XML_Char** attributes)
{
    Get(data).Flush();
    std::map<std::string, std::string> sorted;
    for (; *attributes != nullptr; attributes += 2)
        sorted.emplace(attributes[0], attributes[1]);
    std::string event = std::string("<") + name;
    for (const auto& [key, value] : sorted)
        event += " " + key + "=" + value;
    Get(data).reading.events.push_back(event + ">");
}

void OnEnd(void* data, const XML_Char*)
{
    Get(data).Flush();
    Get(data).reading.events.emplace_back("</>");
}

void OnText(void* data, const XML_Char* text, int length)
{
    Get(data).text.append(text, static_cast<std::size_t>(length));
}

void OnDeclaration(void* data, const XML_Char* version, const XML_Char* encoding, int)
{
    if (version != nullptr)
        Get(data).reading.version = version;
    if (encoding != nullptr)
        Get(data).reading.encoding = encoding;
}

void OnEntity(void* data, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
              const XML_Char*, const XML_Char*, const XML_Char*)
{
    Get(data).reading.declaresEntities = true;
}

/// Gets each token of a document type for which there is no other handler.
void OnOther(void* data, const XML_Char* text, int length)
{
    if (length > 2 && text[0] == '%' && text[length - 1] == ';')
        Get(data).reading.refersToParameterEntities = true;
}

void OnDoctype(void* data, const XML_Char*, const XML_Char* systemId, const XML_Char*, int)
{
    Get(data).reading.hasExternalSubset = systemId != nullptr;
}

} // namespace

ExpatReading ReadWithExpat(std::string_view bytes)
{
    Reader reader;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetUserData(parser.get(), &reader);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    XML_SetXmlDeclHandler(parser.get(), OnDeclaration);
    XML_SetEntityDeclHandler(parser.get(), OnEntity);
    XML_SetStartDoctypeDeclHandler(parser.get(), OnDoctype);
    XML_SetDefaultHandlerExpand(parser.get(), OnOther);
    const auto status =
        XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
    if (status != XML_STATUS_OK) {
        reader.reading.error = XML_ErrorString(XML_GetErrorCode(parser.get()));
        reader.reading.errorPosition =
            static_cast<std::size_t>(XML_GetCurrentByteIndex(parser.get()));
    }
    return std::move(reader.reading);
}
