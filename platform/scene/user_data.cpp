#include <platform/runtime/system.h>
#include <platform/scene/user_data.h>

const S_String P_UserData::sm_strEmpty;

P_UserData::Name::~Name()
{
    if (m_pOfCopies)
    {
        m_pOfCopies->m_pOfSource = nullptr;
    }
    if (m_pOfSource)
    {
        m_pOfSource->m_pOfCopies = nullptr;
    }
}

P_UserData::~P_UserData() = default;

void P_UserData::dump(bool) const
{
    Sys.verbose("Name: \"%s\"\n", getName().c_str());
}

void P_UserData::duplicate(const P_UserData& other)
{
    m_pName = other.m_pName;
}

void P_UserData::setName(const char* name)
{
    setName(S_String(name ? name : ""));
}

void P_UserData::setName(const S_String& name)
{
    S_Handle<Name> made;
    if (!name.empty())
    {
        made = S_Handle<Name>(new Name);
        made->m_strText = name;
    }
    m_pName.swap(made);
}

void P_UserData::setNameOfCopy(const S_String& name, const P_UserData& source)
{
    Name* const before = source.m_pName ? source.m_pName->m_pOfCopies : nullptr;
    if (before && before->m_strText == name)
    {
        ++before->m_iReferenceCount;
        m_pName = S_Handle<Name>(before);
        return;
    }
    setName(name);
    if (source.m_pName && m_pName && source.m_pName != m_pName)
    {
        if (before)
        {
            before->m_pOfSource = nullptr;
        }
        source.m_pName->m_pOfCopies = m_pName.get();
        m_pName->m_pOfSource = source.m_pName.get();
    }
}
