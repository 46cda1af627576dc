#ifndef FREQUENCYHANDLER_INTERFACE_IINTERFACE_C_H
#define FREQUENCYHANDLER_INTERFACE_IINTERFACE_C_H

#include "IInterface.h"

/**
 * An interface that clients written in C can use too.
 *
 * The object keeps a C record, whose layout is the business of the interface, and gives out its address.
 * The C view of the broker hands that address to its clients.
 */
class RADIO_CLASS IInterface_c : public virtual IInterface {
public:
    ~IInterface_c() override = default;

    /** The object's C record; owned by the object and valid as long as it. May be null. */
    virtual void* getCStruct() { return m_pCStruct; }

protected:
    void* m_pCStruct = nullptr;
};

#endif
