def check(o,h,r): return 0
