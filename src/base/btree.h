// cFasterTreeList<K, V>: an ordered map from K to V.
//
// insert() returns the value slot for a key (creating a default value when it is new),
// find() the slot or null, destroy() empties the map. Iteration is in key order.
#pragma once

#include <map>

template <class K, class V> class cFasterTreeList {
public:
  V* insert(const K& key) { return &myMap[key]; }
  V* find(const K& key) {
    auto it = myMap.find(key);
    return it == myMap.end() ? nullptr : &it->second;
  }
  const V* find(const K& key) const {
    auto it = myMap.find(key);
    return it == myMap.end() ? nullptr : &it->second;
  }
  bool remove(const K& key) { return myMap.erase(key) > 0; }
  void destroy() { myMap.clear(); }
  long long count() const { return static_cast<long long>(myMap.size()); }

  auto begin() { return myMap.begin(); }
  auto end() { return myMap.end(); }
  auto begin() const { return myMap.begin(); }
  auto end() const { return myMap.end(); }

private:
  std::map<K, V> myMap;
};
