#pragma once
// A walk over an EC_LinkedList that leaves the list's own cursor alone, so
// that walks may nest (a handler called from a walk may walk the same list).
// It survives removal of any row, as the list's cursor does. An iterator
// whose list is destroyed gives no more rows.
//
//   EC_LinkedListIterator<Row> it(list);
//   while (Row* row = it.next()) { ... }

#include "frame/EC_LinkedList.h"

template <typename T>
class EC_LinkedListIterator {
public:
    explicit EC_LinkedListIterator(EC_LinkedList<T>& list) { list.attach(m_position); }
    // A copy walks on from the same place.
    EC_LinkedListIterator(const EC_LinkedListIterator& other) { copyFrom(other); }
    EC_LinkedListIterator& operator=(const EC_LinkedListIterator& other)
    {
        if (this != &other) {
            leave();
            copyFrom(other);
        }
        return *this;
    }
    ~EC_LinkedListIterator() { leave(); }

    // The next row: the first one on the first call; NIL at the end.
    T* next() { return m_position.step(); }
    // The row in hand; NIL before the walk, at its end, or when it was removed.
    T* current() const { return m_position.current(); }
    // Starts the walk over.
    void reset() { m_position.restart(); }
    // Removes the row in hand from the list; next() then gives the row behind it.
    bool removeCurrent() { return m_position.removeCurrent(); }

private:
    using Position = typename EC_LinkedList<T>::Position;

    void copyFrom(const EC_LinkedListIterator& other)
    {
        m_position.pNode = other.m_position.pNode;
        m_position.started = other.m_position.started;
        m_position.removed = other.m_position.removed;
        if (other.m_position.pList != nullptr) other.m_position.pList->attach(m_position);
    }
    void leave()
    {
        if (m_position.pList != nullptr) m_position.pList->detach(m_position);
    }

    Position m_position;
};
