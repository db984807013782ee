#pragma once
// The core's one container: a singly linked list with a head, a tail, a count
// and a cursor. `add` puts a row at the head, so that a walk sees the newest
// row first; `addLast` appends at the tail where the order of arrival matters.
//
// Every walk (the list's own cursor and each EC_LinkedListIterator) survives
// removal of any row, also of the row in hand: a removed row under a walk
// moves that walk to the row behind it and marks it, so that the next step
// gives that row instead of skipping it. This lets a handler called from a
// walk unsubscribe itself or others.

#include "frame/Noncopyable.h"

#include <cstdint>
#include <memory>
#include <utility>

template <typename T>
class EC_LinkedListIterator;

template <typename T>
class EC_LinkedList : private Noncopyable {
public:
    EC_LinkedList() { attach(m_cursor); }
    ~EC_LinkedList()
    {
        clear();
        for (Position* position = m_pPositions; position != nullptr; position = position->pNextPosition)
            position->pList = nullptr;
    }

    // A new row at the head.
    void add(T value)
    {
        auto node = std::make_unique<Node>(std::move(value));
        node->pNext = std::move(m_pHead);
        m_pHead = std::move(node);
        if (m_pTail == nullptr) m_pTail = m_pHead.get();
        ++m_count;
    }

    // A new row at the tail.
    void addLast(T value)
    {
        auto node = std::make_unique<Node>(std::move(value));
        Node* added = node.get();
        if (m_pTail == nullptr) {
            m_pHead = std::move(node);
        } else {
            m_pTail->pNext = std::move(node);
        }
        m_pTail = added;
        ++m_count;
    }

    // Removes the first row equal to `value`; false when there is none.
    bool remove(const T& value)
    {
        return removeFirst([&value](const T& row) { return row == value; });
    }

    template <typename Predicate>
    bool removeFirst(Predicate predicate)
    {
        for (Node* node = m_pHead.get(); node != nullptr; node = node->pNext.get()) {
            if (predicate(node->value)) {
                unlink(node);
                return true;
            }
        }
        return false;
    }

    // Removes every row for which `predicate` holds; returns how many went.
    template <typename Predicate>
    std::uint32_t removeIf(Predicate predicate)
    {
        std::uint32_t removed = 0;
        Node* node = m_pHead.get();
        while (node != nullptr) {
            Node* following = node->pNext.get();
            if (predicate(node->value)) {
                unlink(node);
                ++removed;
            }
            node = following;
        }
        return removed;
    }

    void clear()
    {
        while (m_pHead != nullptr) unlink(m_pHead.get());
    }

    template <typename Predicate>
    T* find(Predicate predicate)
    {
        for (Node* node = m_pHead.get(); node != nullptr; node = node->pNext.get())
            if (predicate(node->value)) return &node->value;
        return nullptr;
    }

    bool contains(const T& value) const
    {
        for (const Node* node = m_pHead.get(); node != nullptr; node = node->pNext.get())
            if (node->value == value) return true;
        return false;
    }

    std::uint32_t count() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }

    // The list's own cursor, for one walk at a time. first() starts over.
    T* first()
    {
        m_cursor.restart();
        return m_cursor.step();
    }
    T* next() { return m_cursor.step(); }
    // The row under the cursor; NIL before a walk, at its end, or when that
    // row was removed.
    T* current() { return m_cursor.current(); }
    // Removes the row under the cursor; next() then gives the row behind it.
    bool removeCurrent() { return m_cursor.removeCurrent(); }

private:
    friend class EC_LinkedListIterator<T>;

    struct Node {
        explicit Node(T v) : value(std::move(v)) {}
        T value;
        std::unique_ptr<Node> pNext;
    };

    // A walk over the list. Known to the list, which moves it on when the
    // row it stands on goes away.
    struct Position {
        EC_LinkedList* pList = nullptr;
        Node* pNode = nullptr;  // the row in hand, or after a removal the row behind it
        bool started = false;
        bool removed = false;   // the row in hand was removed; pNode is its successor
        Position* pNextPosition = nullptr;

        void restart()
        {
            started = false;
            removed = false;
            pNode = nullptr;
        }
        T* step()
        {
            if (pList == nullptr) return nullptr;
            if (!started) {
                started = true;
                pNode = pList->m_pHead.get();
            } else if (removed) {
                removed = false;
            } else if (pNode != nullptr) {
                pNode = pNode->pNext.get();
            }
            return pNode != nullptr ? &pNode->value : nullptr;
        }
        T* current() const { return (pNode != nullptr && !removed) ? &pNode->value : nullptr; }
        bool removeCurrent()
        {
            if (pList == nullptr || pNode == nullptr || removed) return false;
            pList->unlink(pNode);
            return true;
        }
    };

    // A walk on the stack is known to the list only while it lives: its
    // destructor detaches it. GCC cannot see that pairing and warns.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
    void attach(Position& position)
    {
        position.pList = this;
        position.pNextPosition = m_pPositions;
        m_pPositions = &position;
    }
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic pop
#endif
    void detach(Position& position)
    {
        for (Position** link = &m_pPositions; *link != nullptr; link = &(*link)->pNextPosition) {
            if (*link == &position) {
                *link = position.pNextPosition;
                break;
            }
        }
        position.pList = nullptr;
        position.pNextPosition = nullptr;
    }

    void unlink(Node* node)
    {
        for (Position* position = m_pPositions; position != nullptr; position = position->pNextPosition) {
            if (position->pNode == node) {
                position->pNode = node->pNext.get();
                position->removed = true;
            }
        }
        Node* previous = nullptr;
        for (Node* walk = m_pHead.get(); walk != node; walk = walk->pNext.get()) previous = walk;
        std::unique_ptr<Node>& owner = previous != nullptr ? previous->pNext : m_pHead;
        if (m_pTail == node) m_pTail = previous;
        std::unique_ptr<Node> gone = std::move(owner);
        owner = std::move(gone->pNext);
        --m_count;
    }

    std::unique_ptr<Node> m_pHead;
    Node* m_pTail = nullptr;
    std::uint32_t m_count = 0;
    Position m_cursor;
    Position* m_pPositions = nullptr;
};
