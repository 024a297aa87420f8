#pragma once

#include <moxtel/key_operations.hpp>
#include <moxtel/linked_hash_map.hpp>
#include <moxtel/linked_hash_set.hpp>
#include <moxtel/map.hpp>
#include <moxtel/set_base.hpp>
