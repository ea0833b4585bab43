// The station's configuration database. All operations are static and may be called from any
// thread. Handle 0 reads committed data only and writes straight into committed data.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/Event.h"
#include "platform/IPCData.h"

class IDatabase {
  public:
    enum { EV4_NOTIFICATION = 1004 };

    // One changed attribute in a change event.
    struct attrNameValuePair {
        std::string attrName;
        AttributeVariant attrValue;
        IPCData::AttributeValueType attrType;
        int32_t attrOperation;  // 9: the attribute was deleted
        int32_t reserved;       // copied, never read
        bool hidden;
    };

    // Event 1004: one changed object, or the new value of a status attribute.
    class EventClass_ev4Notification : public VESK::Framework::Event {
      public:
        EventClass_ev4Notification();
        EventClass_ev4Notification(const EventClass_ev4Notification& other);
        EventClass_ev4Notification& operator=(const EventClass_ev4Notification&) = delete;
        ~EventClass_ev4Notification() override;
        VESK::Framework::Event* copyEvent() const override;

        // Sets valueKind, valueSize and valueData from `value` (kind 12 and up: no value).
        void setAttrValue(const AttributeVariant& value);
        // The value as a variant; a kind or size that does not fit gives the char const* "".
        AttributeVariant getAttrValue() const;

        int32_t ticket;
        int32_t valueKind;  // alternative index 0..11; 12 and above: no value
        int32_t valueSize;  // bytes; strings count their terminating zero
        void* valueData;    // owned by the event
        std::string rdn;
        std::string dn;  // the whole dn
        std::list<attrNameValuePair> notifications;
        IPCData::EOperations objOperation;  // 9, 18 or 23
    };

    // 25 opens (new handle, 0 on failure); 26 commits and 27 rolls back (non-zero on success).
    static int transaction(IPCData::EOperations op, int handle, bool flag);
    // Committed data only.
    static int isPresentInDB(std::string dn, int instance);
    // A new copy owned by the caller, in the view of the handle; null if absent there.
    static DBObject* getObject(std::string dn, int instance, int handle);
    // In the view of the handle, null if absent. Owned by the database: valid until the next
    // call of getAttribute on the same thread.
    static Attribute* getAttribute(std::string dn, std::string attributeName, int handle);
    // Copies of all instances of the class in the view of the handle, owned by the caller.
    static std::list<DBObject*> getMOClass(std::string className, int handle);
    // The ids (key values) of the instances of the class directly under the parent.
    static std::list<std::string> getMOClassWithParent(std::string parentDn, std::string className,
                                                       int handle);
    static int insert(DBObject* object, int handle);
    static int update(DBObject* object, int handle);
    static int deleteObj(std::string dn, int instance, int handle);
    static int deleteAttribute(std::string attributeName, std::string dn, std::string unused,
                               int handle);
    static int setAttribute(std::string dn, int instance, std::string attributeName,
                            AttributeVariant value, bool flagA, IPCData::AttributeValueType type,
                            bool inTransaction, int handle);
    // The id of an attribute, or of an object when given its dn, in the baseband object model;
    // 0 when it has none.
    static int32_t getBOAttributeId(DBObject* boMapping, std::string attributeName);
    // Makes the committed state durable.
    static int storePersistentDump(bool flagA, bool flagB);

    // Subscribes `subscriber` (an IEventAware*) to change events; returns a ticket, -1 on failure.
    static int32_t registerToNotif(int eventClass, std::string className, int instance,
                                   void* subscriber, std::string attributeName, int a, int b,
                                   int c);
    static int unRegisterToNotif(int32_t ticket, int eventClass, void* subscriber);
    static int unRegisterToNotif(std::string className, int instance, std::string attributeName,
                                 int a, int b, int c);
    static int unRegisterToAllNotifs();
};
