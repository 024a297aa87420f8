#pragma once

#pragma GCC visibility push(default)

/// \file
/// Measures of interestingness of a rule A => S. The parameters `x`, `y` and `xuy` are the supports
/// of A, of S and of their union. The functions are pure and never fail. Where no special case is
/// stated, division follows IEEE 754 and may give infinity or NaN. Special cases compare exactly.
namespace quarvis::mining {

/// n / t: the share of `n` histories in all `t` histories.
double support(unsigned int n, unsigned int t);

/// supp(A u S) / supp(A); 0 when supp(A) is 0. Agrawal, Imielinski, Swami: Mining Association Rules
/// between Sets of Items in Large Databases (1993).
double confidence(double xuy, double x);

/// supp(A u S) / (supp(A) supp(S)); 0 when the product is 0. Brin, Motwani, Ullman, Tsur: Dynamic
/// Itemset Counting and Implication Rules for Market Basket Data (1997), there "interest".
double lift(double xuy, double x, double y);

/// (1 - supp(S)) / (1 - confidence), from supp(S) and the confidence; infinite when the confidence
/// is 1. Brin et al. (1997).
double conviction(double sy, double cxy);

/// supp(A u S) / supp(S); 0 when supp(S) is 0: the confidence of the converse rule.
double probability(double xuy, double y);

/// The odds of A within S, supp(A u S) / (supp(S) - supp(A u S)); infinite when both supports are
/// equal, negative when the first is greater.
double certainty(double xuy, double y);

}  // namespace quarvis::mining

#pragma GCC visibility pop
