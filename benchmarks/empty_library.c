// The floor of loading: a shared library with nothing in it. ISO C wants one declaration.
typedef int zrapi_benchmark_nothing;
