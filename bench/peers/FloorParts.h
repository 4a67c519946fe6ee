/// @file
/// What a floor scene is made of: compact parts, and those that the standard library has ready.
#pragma once

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace bench
{

/// What both kinds do alike.
struct FloorTexts
{
    /// Whether pins are registered before they have their names, connections end one by one when all do, each
    /// node's XML is a text of its own, and moves report how pins were renamed.
    static constexpr bool goesStepByStep = false;

    // As a signed number, which is how the library writes ids.
    static void appendNumber(std::string& out, std::uint32_t number)
    {
        char digits[16];
        auto const end = std::to_chars(digits, digits + sizeof digits, static_cast<std::int32_t>(number)).ptr;
        out.append(digits, end);
    }

    template <class Node>
    static std::string fullName(Node const& node)
    {
        if (node.owner == nullptr) return node.name;
        return fullName(*node.owner).append(".").append(node.name);
    }
};

/// The ordered maps and plain vectors that come to mind first.
struct OrderedParts : FloorTexts
{
    using Lock = std::recursive_mutex;

    template <class Node>
    class TreeLinks
    {
    public:
        void addChild(Node* child) { children_.push_back(child); }
        void removeChild(Node* child)
        {
            children_.erase(std::find(children_.begin(), children_.end(), child));
        }
        template <class Visit>
        void eachChild(Visit visit) const
        {
            for (Node* const child : children_) visit(child);
        }
        void nameChanged() {}

    private:
        std::vector<Node*> children_;
    };

    template <class T>
    class PointerList
    {
    public:
        void append(T* element) { elements_.push_back(element); }
        void removeFast(T* element)
        {
            *std::find(elements_.begin(), elements_.end(), element) = elements_.back();
            elements_.pop_back();
        }
        std::size_t size() const { return elements_.size(); }
        auto begin() const { return elements_.begin(); }
        auto end() const { return elements_.end(); }

    private:
        std::vector<T*> elements_;
    };

    template <class T>
    struct Pool
    {
        template <class... Arguments>
        T* make(Arguments&&... arguments)
        {
            return new T(std::forward<Arguments>(arguments)...);
        }
        void free(T* object) { delete object; }
    };

    template <class T>
    class IdIndex
    {
    public:
        T* find(std::uint32_t id) const
        {
            auto const entry = entries_.find(id);
            return entry != entries_.end() ? entry->second : nullptr;
        }
        void insert(std::uint32_t id, T* object) { entries_.emplace(id, object); }
        void erase(std::uint32_t id) { entries_.erase(id); }
        template <class Visit>
        void each(Visit visit) const
        {
            for (auto const& [id, object] : entries_) visit(object);
        }

    private:
        std::map<std::uint32_t, T*> entries_;
    };

    template <class Node>
    class NodeNameIndex
    {
    public:
        void insert(Node* node) { entries_.emplace(fullName(*node), node); }
        void erase(Node* node) { entries_.erase(fullName(*node)); }
        Node* find(std::string const& name) const
        {
            auto const entry = entries_.find(name);
            return entry != entries_.end() ? entry->second : nullptr;
        }

    private:
        std::unordered_map<std::string, Node*> entries_;
    };

    template <class Pin>
    class PinNameIndex
    {
    public:
        void insert(Pin* pin) { entries_.emplace(key(*pin), pin); }
        void erase(Pin* pin) { entries_.erase(key(*pin)); }
        Pin* find(std::string_view name) const
        {
            auto const entry = entries_.find(name);
            return entry != entries_.end() ? entry->second : nullptr;
        }

    private:
        static std::string key(Pin const& pin) { return fullName(*pin.node).append(".").append(pin.name); }

        std::map<std::string, Pin*, std::less<>> entries_;
    };

    class PairCounts
    {
    public:
        void add(std::uint32_t source, std::uint32_t target, int change, bool implicit)
        {
            all_[source][target] += change;
            if (!implicit) notImplicit_[source][target] += change;
        }
        bool connected(std::uint32_t source, std::uint32_t target, bool includeImplicit) const
        {
            Counts const& counts = includeImplicit ? all_ : notImplicit_;
            auto const targets = counts.find(source);
            if (targets == counts.end()) return false;
            auto const count = targets->second.find(target);
            return count != targets->second.end() && count->second > 0;
        }

    private:
        using Counts = std::map<std::uint32_t, std::map<std::uint32_t, int>>;

        Counts all_;
        Counts notImplicit_;
    };
};

/// Vectors by id, open addressing without stored keys, pooled objects, intrusive child lists, a lock of 8
/// bytes.
struct FlatParts : FloorTexts
{
    /// Re-entrant: the owning thread's number and the depth.
    class Lock
    {
    public:
        void lock()
        {
            std::uint32_t const self = threadNumber();
            if (owner_.load(std::memory_order_relaxed) == self)
            {
                ++depth_;
                return;
            }
            std::uint32_t nobody = 0;
            while (!owner_.compare_exchange_weak(nobody, self, std::memory_order_acquire))
            {
                nobody = 0;
                std::this_thread::yield();
            }
            depth_ = 1;
        }
        void unlock()
        {
            if (--depth_ == 0) owner_.store(0, std::memory_order_release);
        }

    private:
        static std::uint32_t threadNumber()
        {
            static std::atomic<std::uint32_t> last{0};
            thread_local std::uint32_t const number = ++last;
            return number;
        }

        std::atomic<std::uint32_t> owner_{0};
        std::uint32_t depth_ = 0;
    };

    /// FNV-1a, which goes on where the hash of a prefix ended.
    class Hash
    {
    public:
        static constexpr std::uint64_t start = 0xcbf29ce484222325u;

        static std::uint64_t extended(std::uint64_t hash, std::string_view text)
        {
            for (char const c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
            return hash;
        }
    };

    template <class Node>
    class TreeLinks
    {
    public:
        void addChild(Node* child)
        {
            child->previous_ = last_;
            child->next_ = nullptr;
            (last_ != nullptr ? last_->next_ : first_) = child;
            last_ = child;
        }
        void removeChild(Node* child)
        {
            (child->previous_ != nullptr ? child->previous_->next_ : first_) = child->next_;
            (child->next_ != nullptr ? child->next_->previous_ : last_) = child->previous_;
        }
        template <class Visit>
        void eachChild(Visit visit) const
        {
            for (Node* child = first_; child != nullptr; child = child->next_) visit(child);
        }

        void nameChanged()
        {
            Node const& self = static_cast<Node const&>(*this);
            fullNameHash_ = self.owner == nullptr ? Hash::extended(Hash::start, self.name)
                                                  : Hash::extended(self.owner->hashBelow(), self.name);
        }
        std::uint64_t fullNameHash() const { return fullNameHash_; }
        /// That of the full name and the dot behind it.
        std::uint64_t hashBelow() const { return Hash::extended(fullNameHash_, "."); }

    private:
        std::uint64_t fullNameHash_ = 0;
        Node* first_ = nullptr;
        Node* last_ = nullptr;
        Node* previous_ = nullptr;
        Node* next_ = nullptr;
    };

    /// 16 bytes, with one element in place.
    template <class T>
    class PointerList
    {
    public:
        PointerList() : one_(nullptr) {}
        ~PointerList()
        {
            if (capacity_ > 1) std::free(many_);
        }
        PointerList(PointerList const&) = delete;
        PointerList& operator=(PointerList const&) = delete;

        T* const* begin() const { return capacity_ == 1 ? &one_ : many_; }
        T* const* end() const { return begin() + size_; }
        T** begin() { return capacity_ == 1 ? &one_ : many_; }
        T** end() { return begin() + size_; }
        std::size_t size() const { return size_; }

        void append(T* element)
        {
            if (size_ == capacity_) grow();
            begin()[size_++] = element;
        }
        void removeFast(T* element)
        {
            *std::find(begin(), end(), element) = begin()[size_ - 1];
            --size_;
        }

    private:
        void grow()
        {
            void* const block = std::malloc(sizeof(T*) * capacity_ * 2);
            if (block == nullptr) throw std::bad_alloc();
            std::memcpy(block, begin(), sizeof(T*) * size_);
            if (capacity_ > 1) std::free(many_);
            many_ = static_cast<T**>(block);
            capacity_ *= 2;
        }

        union
        {
            T* one_;
            T** many_;
        };
        std::uint32_t size_ = 0;
        std::uint32_t capacity_ = 1;
    };

    /// Objects in chunks; the free ones form a list.
    template <class T>
    class Pool
    {
    public:
        Pool() = default;
        ~Pool()
        {
            for (Slot* const chunk : chunks_) ::operator delete(chunk);
        }
        Pool(Pool const&) = delete;
        Pool& operator=(Pool const&) = delete;

        template <class... Arguments>
        T* make(Arguments&&... arguments)
        {
            return new (takeSlot()->bytes) T(std::forward<Arguments>(arguments)...);
        }
        void free(T* object)
        {
            object->~T();
            Slot* const slot = reinterpret_cast<Slot*>(object);
            slot->next = firstFree_;
            firstFree_ = slot;
        }

    private:
        union Slot
        {
            Slot* next;
            alignas(T) unsigned char bytes[sizeof(T)];
        };
        static constexpr std::size_t chunkSize = 256;

        Slot* takeSlot()
        {
            if (firstFree_ != nullptr) return std::exchange(firstFree_, firstFree_->next);
            if (used_ == chunkSize)
            {
                chunks_.push_back(static_cast<Slot*>(::operator new(sizeof(Slot) * chunkSize)));
                used_ = 0;
            }
            return chunks_.back() + used_++;
        }

        std::vector<Slot*> chunks_;
        Slot* firstFree_ = nullptr;
        std::size_t used_ = chunkSize;
    };

    template <class T>
    class IdIndex
    {
    public:
        T* find(std::uint32_t id) const { return id < objects_.size() ? objects_[id] : nullptr; }
        void insert(std::uint32_t id, T* object)
        {
            if (id >= objects_.size()) objects_.resize(std::size_t{id} + 1, nullptr);
            objects_[id] = object;
        }
        void erase(std::uint32_t id) { objects_[id] = nullptr; }
        template <class Visit>
        void each(Visit visit) const
        {
            for (T* const object : objects_)
                if (object != nullptr) visit(object);
        }

    private:
        std::vector<T*> objects_;
    };

    /// How a name index finds the hash and the full name of a node, building neither and keeping nothing.
    struct NodeNaming
    {
        template <class Node>
        static std::uint64_t hash(Node const& node)
        {
            return node.fullNameHash();
        }

        // From the end up to the root.
        template <class Node>
        static bool isFullName(Node const& node, std::string_view text)
        {
            if (!text.ends_with(node.name)) return false;
            text.remove_suffix(node.name.size());
            if (node.owner == nullptr) return text.empty();
            if (!text.ends_with('.')) return false;
            text.remove_suffix(1);
            return isFullName(*node.owner, text);
        }
    };

    struct PinNaming
    {
        template <class Pin>
        static std::uint64_t hash(Pin const& pin)
        {
            return Hash::extended(pin.node->hashBelow(), pin.name);
        }

        template <class Pin>
        static bool isFullName(Pin const& pin, std::string_view text)
        {
            if (!text.ends_with(pin.name)) return false;
            text.remove_suffix(pin.name.size());
            if (!text.ends_with('.')) return false;
            text.remove_suffix(1);
            return NodeNaming::isFullName(*pin.node, text);
        }
    };

    /// Keeps nothing of an object's full name, which is what the naming says.
    template <class Naming>
    struct NoText
    {
        NoText() = default;
        template <class T>
        explicit NoText(T const&)
        {}
        template <class T>
        bool is(std::string_view text, T const& object) const
        {
            return Naming::isFullName(object, text);
        }
    };

    /// Linear probing; a removal moves back what comes behind it, so there are no tombstones. `Text` is what
    /// stands beside an object.
    template <class T, class Naming, class Text = NoText<Naming>>
    class NameIndex
    {
    public:
        void insert(T* object)
        {
            if (++size_ * 10 > slots_.size() * 7) grow();
            put({Naming::hash(*object), object, Text(*object)});
        }

        void erase(T* object)
        {
            std::size_t hole = home(Naming::hash(*object));
            while (slots_[hole].object != object)
            {
                if (slots_[hole].object == nullptr) return;
                hole = following(hole);
            }
            for (std::size_t i = following(hole); slots_[i].object != nullptr; i = following(i))
            {
                if (distance(home(slots_[i].hash), i) < distance(hole, i)) continue;
                slots_[hole] = std::move(slots_[i]);
                hole = i;
            }
            slots_[hole] = Slot();
            --size_;
        }

        T* find(std::string_view fullName) const
        {
            std::uint64_t const hash = Hash::extended(Hash::start, fullName);
            for (std::size_t i = home(hash); slots_[i].object != nullptr; i = following(i))
                if (slots_[i].hash == hash && slots_[i].text.is(fullName, *slots_[i].object))
                    return slots_[i].object;
            return nullptr;
        }

    private:
        struct Slot
        {
            std::uint64_t hash = 0;
            T* object = nullptr;
            [[no_unique_address]] Text text;
        };

        std::size_t home(std::uint64_t hash) const
        {
            return (hash * 0x9E3779B97F4A7C15u >> 32) & (slots_.size() - 1);
        }
        std::size_t following(std::size_t place) const { return (place + 1) & (slots_.size() - 1); }
        std::size_t distance(std::size_t from, std::size_t to) const
        {
            return (to - from) & (slots_.size() - 1);
        }

        void put(Slot&& slot)
        {
            std::size_t place = home(slot.hash);
            while (slots_[place].object != nullptr) place = following(place);
            slots_[place] = std::move(slot);
        }

        void grow()
        {
            std::vector<Slot> old(slots_.size() * 2);
            old.swap(slots_);
            for (Slot& slot : old)
                if (slot.object != nullptr) put(std::move(slot));
        }

        std::vector<Slot> slots_ = std::vector<Slot>(16);
        std::size_t size_ = 0;
    };

    template <class Node>
    using NodeNameIndex = NameIndex<Node, NodeNaming>;
    template <class Pin>
    using PinNameIndex = NameIndex<Pin, PinNaming>;

    /// Open addressing by both ids. Counts may fall to 0; their slots stay.
    class PairCounts
    {
    public:
        void add(std::uint32_t source, std::uint32_t target, int change, bool implicit)
        {
            std::uint64_t const key = keyOf(source, target);
            if (slots_[place(key)].key == noKey)
            {
                if (++size_ * 10 > slots_.size() * 6) grow();
                slots_[place(key)].key = key;
            }
            Slot& slot = slots_[place(key)];
            slot.all += change;
            if (!implicit) slot.notImplicit += change;
        }

        bool connected(std::uint32_t source, std::uint32_t target, bool includeImplicit) const
        {
            Slot const& slot = slots_[place(keyOf(source, target))];
            return (includeImplicit ? slot.all : slot.notImplicit) > 0;
        }

    private:
        static constexpr std::uint64_t noKey = ~std::uint64_t{0};

        struct Slot
        {
            std::uint64_t key = noKey;
            std::int32_t all = 0;
            std::int32_t notImplicit = 0;
        };

        static std::uint64_t keyOf(std::uint32_t source, std::uint32_t target)
        {
            return std::uint64_t{source} << 32 | target;
        }

        // Of the key, or where it would go.
        std::size_t place(std::uint64_t key) const
        {
            std::uint64_t mixed = key * 0x9E3779B97F4A7C15u;
            mixed ^= mixed >> 32;
            std::size_t i = (mixed * 0xD6E8FEB86659FD93u >> 32) & (slots_.size() - 1);
            while (slots_[i].key != key && slots_[i].key != noKey) i = (i + 1) & (slots_.size() - 1);
            return i;
        }

        void grow()
        {
            std::vector<Slot> old(slots_.size() * 2);
            old.swap(slots_);
            for (Slot const& slot : old)
                if (slot.key != noKey) slots_[place(slot.key)] = slot;
        }

        std::vector<Slot> slots_ = std::vector<Slot>(16);
        std::size_t size_ = 0;
    };
};

/// The compact parts, with what a host may take part in: each object is made and ended by itself, and the
/// index of pins keeps its names, as it has to where a host may enter a pin under any.
struct StepwiseParts : FlatParts
{
    static constexpr bool goesStepByStep = true;

    class PinName
    {
    public:
        PinName() = default;
        template <class Pin>
        explicit PinName(Pin const& pin)
        {
            std::string const name = fullName(*pin.node).append(".").append(pin.name);
            length_ = static_cast<std::uint32_t>(name.size());
            bytes_ = std::make_unique<char[]>(name.size());
            std::copy(name.begin(), name.end(), bytes_.get());
        }
        template <class Pin>
        bool is(std::string_view text, Pin const&) const
        {
            return text == std::string_view(bytes_.get(), length_);
        }

    private:
        std::unique_ptr<char[]> bytes_;
        std::uint32_t length_ = 0;
    };

    template <class Pin>
    using PinNameIndex = NameIndex<Pin, PinNaming, PinName>;

    template <class T>
    class Pool
    {
    public:
        template <class... Arguments>
        T* make(Arguments&&... arguments)
        {
            return new T(std::forward<Arguments>(arguments)...);
        }
        void free(T* object) { delete object; }
    };
};

} // namespace bench
