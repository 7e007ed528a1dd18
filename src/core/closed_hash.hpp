#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <new>
#include <utility>

namespace vorlen {

/// The pair of entry points every closed hash table allocates through.
struct capture_allocator_t {
    void* (*allocate)(std::size_t size);
    void (*deallocate)(void* block);
};

const capture_allocator_t& default_capture_allocator() noexcept;

/// The first capacity of the fixed prime table that is not less than `wanted`.
std::size_t closed_hash_capacity(std::size_t wanted) noexcept;

/// hash mod capacity. Capacities come from a fixed table, so each case divides by a constant,
/// which the compiler turns into a multiplication: a lookup is dominated by the division else.
inline std::size_t closed_hash_slot(std::uint64_t hash, std::size_t capacity) noexcept {
    switch (capacity) {
    case 3: return static_cast<std::size_t>(hash % 3ULL);
    case 7: return static_cast<std::size_t>(hash % 7ULL);
    case 17: return static_cast<std::size_t>(hash % 17ULL);
    case 37: return static_cast<std::size_t>(hash % 37ULL);
    case 79: return static_cast<std::size_t>(hash % 79ULL);
    case 163: return static_cast<std::size_t>(hash % 163ULL);
    case 331: return static_cast<std::size_t>(hash % 331ULL);
    case 673: return static_cast<std::size_t>(hash % 673ULL);
    case 1361: return static_cast<std::size_t>(hash % 1361ULL);
    case 2729: return static_cast<std::size_t>(hash % 2729ULL);
    case 5471: return static_cast<std::size_t>(hash % 5471ULL);
    case 10949: return static_cast<std::size_t>(hash % 10949ULL);
    default: return static_cast<std::size_t>(hash % capacity);
    }
}

/// A hash set with every slot in one block behind a single pointer. Each slot is either free or
/// in use; slots in use form one doubly linked list in the order chains were first inserted, the
/// others form the free list. Collided entries live in slots taken from the free list and are
/// linked right after their chain's head, so iteration visits a head and then its chain, newest
/// collided entry first. The table grows only when every slot is in use (load factor 1).
template <typename T, typename KeyTransform, typename Hash, typename Pred>
class closed_hash_set {
    struct node_base_t {
        std::uintptr_t next_m = 0; // pointer to the next node, state in the low two bits
        node_base_t* prev_m = nullptr;

        node_base_t* next() const noexcept {
            return reinterpret_cast<node_base_t*>(next_m & ~std::uintptr_t(3));
        }
        unsigned state() const noexcept { return static_cast<unsigned>(next_m & 3); }
        void set_next(node_base_t* n) noexcept {
            next_m = reinterpret_cast<std::uintptr_t>(n) | (next_m & 3);
        }
        void set_state(unsigned s) noexcept { next_m = (next_m & ~std::uintptr_t(3)) | s; }
    };

    struct node_t : node_base_t {
        union {
            T value_m;
        };
        node_t() noexcept {}
        ~node_t() {}
    };

    struct header_t {
        const capture_allocator_t* allocator_m;
        node_base_t used_m;
        node_base_t free_m;
        std::uint64_t capacity_m;
        std::uint64_t size_m;
    };

    enum : unsigned { state_free = 0, state_head = 1, state_chained = 2 };

    static constexpr std::size_t slot_offset =
        (sizeof(header_t) + alignof(node_t) - 1) / alignof(node_t) * alignof(node_t);

public:
    using value_type = T;
    using key_type = std::decay_t<std::invoke_result_t<KeyTransform, const T&>>;
    using size_type = std::size_t;

    template <bool Const>
    class basic_iterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = std::conditional_t<Const, const T*, T*>;
        using reference = std::conditional_t<Const, const T&, T&>;

        basic_iterator() = default;
        template <bool C = Const, typename = std::enable_if_t<C>>
        basic_iterator(const basic_iterator<false>& other) : node_m(other.node_m) {}

        reference operator*() const { return static_cast<node_t*>(node_m)->value_m; }
        pointer operator->() const { return &static_cast<node_t*>(node_m)->value_m; }
        basic_iterator& operator++() {
            node_m = node_m->next();
            return *this;
        }
        basic_iterator operator++(int) {
            basic_iterator result = *this;
            ++*this;
            return result;
        }
        basic_iterator& operator--() {
            node_m = node_m->prev_m;
            return *this;
        }
        basic_iterator operator--(int) {
            basic_iterator result = *this;
            --*this;
            return result;
        }
        friend bool operator==(const basic_iterator& a, const basic_iterator& b) {
            return a.node_m == b.node_m;
        }

    private:
        friend class closed_hash_set;
        template <bool>
        friend class basic_iterator;
        explicit basic_iterator(node_base_t* node) : node_m(node) {}

        node_base_t* node_m = nullptr;
    };

    using iterator = basic_iterator<false>;
    using const_iterator = basic_iterator<true>;

    closed_hash_set() noexcept = default;
    closed_hash_set(std::initializer_list<T> values) {
        reserve(values.size());
        for (const T& value : values)
            insert(value);
    }
    closed_hash_set(const closed_hash_set& other) {
        if (other.empty())
            return;
        reserve(other.size());
        for (const T& value : other)
            insert(value);
    }
    closed_hash_set(closed_hash_set&& other) noexcept : header_m(other.header_m) {
        other.header_m = nullptr;
    }
    closed_hash_set& operator=(closed_hash_set other) noexcept {
        swap(other);
        return *this;
    }
    ~closed_hash_set() { release(); }

    void swap(closed_hash_set& other) noexcept { std::swap(header_m, other.header_m); }
    friend void swap(closed_hash_set& a, closed_hash_set& b) noexcept { a.swap(b); }

    size_type size() const noexcept { return header_m ? header_m->size_m : 0; }
    size_type capacity() const noexcept { return header_m ? header_m->capacity_m : 0; }
    bool empty() const noexcept { return size() == 0; }

    iterator begin() noexcept { return header_m ? iterator(header_m->used_m.next()) : iterator(); }
    iterator end() noexcept { return header_m ? iterator(&header_m->used_m) : iterator(); }
    const_iterator begin() const noexcept {
        return header_m ? const_iterator(header_m->used_m.next()) : const_iterator();
    }
    const_iterator end() const noexcept {
        return header_m ? const_iterator(&header_m->used_m) : const_iterator();
    }

    iterator find(const key_type& key) { return find_hashed(key, Hash()(key)); }
    const_iterator find(const key_type& key) const {
        return const_cast<closed_hash_set*>(this)->find(key);
    }
    iterator find_hashed(const key_type& key, std::uint64_t hash) {
        if (!header_m)
            return end();
        node_t* home = slot(closed_hash_slot(hash, header_m->capacity_m));
        if (home->state() != state_head)
            return end();
        node_t* found = find_in_chain(home, key);
        return found ? iterator(found) : end();
    }
    size_type count(const key_type& key) const { return find(key) != end() ? 1 : 0; }

    std::pair<iterator, bool> insert(const T& value) {
        return insert_hashed(value, Hash()(KeyTransform()(value)));
    }
    std::pair<iterator, bool> insert(T&& value) {
        const std::uint64_t hash = Hash()(KeyTransform()(value));
        return insert_hashed(std::move(value), hash);
    }

    /// Insert with a hash the caller has already computed for the value's key.
    template <typename U>
    std::pair<iterator, bool> insert_hashed(U&& value, std::uint64_t hash) {
        if (size() == capacity()) {
            const size_type wanted = size() ? size() * 2 : 3;
            if (wanted > capacity())
                reserve(wanted);
        }
        node_t* home = slot(closed_hash_slot(hash, header_m->capacity_m));
        switch (home->state()) {
        case state_head: {
            if (node_t* found = find_in_chain(home, KeyTransform()(value)))
                return {iterator(found), false};
            node_t* node = take_free();
            construct(node, std::forward<U>(value));
            node->set_state(state_chained);
            link_before(home->next(), node);
            ++header_m->size_m;
            return {iterator(node), true};
        }
        case state_chained: {
            // The home slot holds an entry of another chain: move it out, keeping its place.
            node_t* node = take_free();
            construct(node, std::move(home->value_m));
            home->value_m.~T();
            node->set_state(state_chained);
            link_before(home, node);
            unlink(home);
            break;
        }
        default: unlink(home); break;
        }
        construct(home, std::forward<U>(value));
        home->set_state(state_head);
        link_before(&header_m->used_m, home);
        ++header_m->size_m;
        return {iterator(home), true};
    }

    /// Erasing a chain head moves the first chained entry into the head slot, so the chain keeps
    /// its home. Returns the position of the entry that follows the erased one.
    iterator erase(const_iterator position) {
        node_t* node = static_cast<node_t*>(position.node_m);
        node_base_t* next = node->next();
        if (node->state() == state_head && next != &header_m->used_m &&
            next->state() == state_chained) {
            node_t* chained = static_cast<node_t*>(next);
            node->value_m.~T();
            construct(node, std::move(chained->value_m));
            release_node(chained);
            return iterator(node);
        }
        release_node(node);
        return iterator(next);
    }
    size_type erase(const key_type& key) {
        auto found = find(key);
        if (found == end())
            return 0;
        erase(found);
        return 1;
    }

    void clear() noexcept {
        if (!header_m)
            return;
        destroy_all();
        reset_lists();
    }

    /// Make room for at least `wanted` entries; entries move over in iteration order.
    void reserve(size_type wanted) {
        const size_type new_capacity = closed_hash_capacity(wanted);
        if (new_capacity <= capacity())
            return;
        closed_hash_set grown;
        grown.header_m = allocate(new_capacity);
        for (T& value : *this)
            grown.insert(std::move(value));
        swap(grown);
    }

private:
    static void unlink(node_base_t* node) noexcept {
        node->prev_m->set_next(node->next());
        node->next()->prev_m = node->prev_m;
    }
    static void link_before(node_base_t* position, node_base_t* node) noexcept {
        node->prev_m = position->prev_m;
        node->set_next(position);
        position->prev_m->set_next(node);
        position->prev_m = node;
    }
    template <typename U>
    static void construct(node_t* node, U&& value) {
        ::new (static_cast<void*>(&node->value_m)) T(std::forward<U>(value));
    }

    node_t* slot(std::size_t index) const noexcept {
        return reinterpret_cast<node_t*>(reinterpret_cast<char*>(header_m) + slot_offset) + index;
    }

    node_t* find_in_chain(node_t* home, const key_type& key) const {
        node_base_t* node = home;
        do {
            if (Pred()(KeyTransform()(static_cast<node_t*>(node)->value_m), key))
                return static_cast<node_t*>(node);
            node = node->next();
        } while (node != &header_m->used_m && node->state() != state_head);
        return nullptr;
    }

    node_t* take_free() noexcept {
        node_base_t* node = header_m->free_m.next();
        unlink(node);
        return static_cast<node_t*>(node);
    }

    void release_node(node_t* node) noexcept {
        node->value_m.~T();
        unlink(node);
        node->set_state(state_free);
        link_before(header_m->free_m.next(), node);
        --header_m->size_m;
    }

    static header_t* allocate(std::size_t capacity) {
        const capture_allocator_t& allocator = default_capture_allocator();
        void* block = allocator.allocate(slot_offset + capacity * sizeof(node_t));
        header_t* header = ::new (block) header_t{&allocator, {}, {}, capacity, 0};
        node_t* slots = reinterpret_cast<node_t*>(static_cast<char*>(block) + slot_offset);
        for (std::size_t i = 0; i != capacity; ++i)
            ::new (static_cast<void*>(slots + i)) node_t();
        closed_hash_set holder;
        holder.header_m = header;
        holder.reset_lists();
        holder.header_m = nullptr;
        return header;
    }

    void reset_lists() noexcept {
        header_t& h = *header_m;
        h.used_m.next_m = reinterpret_cast<std::uintptr_t>(&h.used_m);
        h.used_m.prev_m = &h.used_m;
        h.free_m.next_m = reinterpret_cast<std::uintptr_t>(&h.free_m);
        h.free_m.prev_m = &h.free_m;
        for (std::size_t i = 0; i != h.capacity_m; ++i) {
            node_t* node = slot(i);
            node->next_m = 0;
            link_before(&h.free_m, node);
        }
        h.size_m = 0;
    }

    void destroy_all() noexcept {
        for (node_base_t* node = header_m->used_m.next(); node != &header_m->used_m;
             node = node->next())
            static_cast<node_t*>(node)->value_m.~T();
    }

    void release() noexcept {
        if (!header_m)
            return;
        destroy_all();
        const capture_allocator_t* allocator = header_m->allocator_m;
        for (std::size_t i = 0; i != header_m->capacity_m; ++i)
            slot(i)->~node_t();
        header_m->~header_t();
        allocator->deallocate(header_m);
        header_m = nullptr;
    }

    header_t* header_m = nullptr;
};

struct select_first_t {
    template <typename Pair>
    const typename Pair::first_type& operator()(const Pair& pair) const noexcept {
        return pair.first;
    }
};

/// The map form: entries are (key, value) pairs keyed by their first element.
template <typename Key, typename T, typename Hash, typename Pred>
class closed_hash_map
    : public closed_hash_set<std::pair<const Key, T>, select_first_t, Hash, Pred> {
    using base_t = closed_hash_set<std::pair<const Key, T>, select_first_t, Hash, Pred>;

public:
    using key_type = Key;
    using mapped_type = T;
    using base_t::base_t;

    T& operator[](const Key& key) {
        auto found = this->find(key);
        if (found != this->end())
            return found->second;
        return this->insert(std::pair<const Key, T>(key, T())).first->second;
    }

    /// Equal when both hold the same keys with equal values, whatever the insertion order.
    friend bool operator==(const closed_hash_map& a, const closed_hash_map& b) {
        if (a.size() != b.size())
            return false;
        for (const auto& entry : a) {
            auto found = b.find(entry.first);
            if (found == b.end() || !(found->second == entry.second))
                return false;
        }
        return true;
    }
};

} // namespace vorlen
