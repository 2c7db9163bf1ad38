// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

// While it lives, root is an ordinary user, whom permissions bind.
class OrdinaryUser
{
public:
    static constexpr uid_t kNobody = 65534;

    OrdinaryUser() : m_wasRoot(::geteuid() == 0)
    {
        if (m_wasRoot && ::seteuid(kNobody) != 0) ADD_FAILURE() << "still root";
    }
    ~OrdinaryUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0) ADD_FAILURE() << "no longer root";
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool m_wasRoot;
};
