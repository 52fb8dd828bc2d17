#pragma once

#include "scanner/ParsedNames.h"

#include <kescorexml/detail/AttributeStorage.h>

#include <xercesc/sax2/Attributes.hpp>

/// The attributes of a start tag as a map by qualified name, those that the colon sanitizer renamed
/// under their own names again and its declaration left out. Of equal names the first one stays.
AttributeStorage::AttributeMap ToAttributeMap(ParsedNames& names,
                                              const xercesc::Attributes& attributes);

/// The same attributes, packed into `arena`.
AttributeStorage PackAttributes(ParseArena& arena, ParsedNames& names, ParsedNames::Entry& element,
                                const xercesc::Attributes& attributes);

/// The units of all names and values and one for each attribute.
std::size_t CountUnits(const xercesc::Attributes& attributes);
/// The same at less cost, by help of what PackAttributes made of them.
std::size_t CountUnits(const xercesc::Attributes& attributes, const AttributeStorage& packed);
