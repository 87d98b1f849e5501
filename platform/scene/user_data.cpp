#include <platform/runtime/system.h>
#include <platform/scene/user_data.h>

P_UserData::~P_UserData() = default;

void P_UserData::dump(bool) const
{
    Sys.verbose("Name: \"%s\"\n", m_strName.c_str());
}

void P_UserData::duplicate(const P_UserData& other)
{
    m_strName = other.m_strName;
}

void P_UserData::setName(const char* name)
{
    m_strName = name ? name : "";
}

void P_UserData::setName(const S_String& name)
{
    m_strName = name;
}
