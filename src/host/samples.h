// What the two lists of samples have in common.
#pragma once

// How many seconds' samples wait for an upload at most: one that is stuck for hours must not fill
// the memory.
constexpr unsigned long SAMPLE_SECONDS_MOST = 600;

// Frees the nodes at the head of a list (see appendNodes) that `isOld` says are.
template <class Node, class IsOld>
void dropOldest(Node*& head, Node*& prev, IsOld isOld) {
    while (head != nullptr && isOld(*head)) {
        Node* next = head->next;
        delete head;
        head = next;
    }
    if (head == nullptr)
        prev = nullptr;
}
