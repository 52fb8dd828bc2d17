#pragma once

#include "support/OddDocuments.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What OddDocuments.h hands out, as it is put together.
namespace OddDocuments {

/// Gathers documents.
class Collection
{
public:
    void Plain(std::initializer_list<std::string_view> documents) { Add(documents, true); }
    void Other(std::initializer_list<std::string_view> documents) { Add(documents, false); }
    void PlainText(std::string document) { m_documents.push_back({std::move(document), true}); }
    void OtherText(std::string document) { m_documents.push_back({std::move(document), false}); }

    std::vector<Document> Take() { return std::move(m_documents); }

private:
    void Add(std::initializer_list<std::string_view> documents, bool isPlain)
    {
        for (const std::string_view bytes : documents)
            m_documents.push_back({std::string(bytes), isPlain});
    }

    std::vector<Document> m_documents;
};

/// White space, elements, names and attributes.
void AddTags(Collection& collection);
/// What stands between tags.
void AddContent(Collection& collection);
/// Byte-order marks, declarations and document types.
void AddProlog(Collection& collection);

} // namespace OddDocuments
