#pragma once

#include "sinks/ScanSink.h"

#include <kescorexml/detail/AttributeStorage.h>

/// The attributes of a start tag as a map by qualified name, those that the colon sanitizer renamed
/// under their own names again and its declaration left out. Of equal names the first one stays.
AttributeStorage::AttributeMap ToAttributeMap(const StartTag& tag);

/// The same attributes, packed into `arena`.
AttributeStorage PackAttributes(ParseArena& arena, const StartTag& tag);

/// The list of the names of the tag's attributes; null when there are none, when they are too many
/// or when some are not those of the map. Valid until it is asked for another; whoever keeps it
/// retains it.
AttributeNames* FindOrMakeAttributeNames(const StartTag& tag);
