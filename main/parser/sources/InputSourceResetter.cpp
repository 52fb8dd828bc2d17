#include <kescorexml/InputSourceResetter.h>

InputSourceResetter::~InputSourceResetter()
{
    m_source.ResetToStart();
}
