#header  profile=tran1 columns=3
#names   time,V(in),V(out)
0.000E+00,0.000E+00,0.000E+00
1.269E-04,1.999E-02,7.505E-01
3.669E-04,-1.989E-02,-7.567E-01
1.626E-03,1.999E-02,7.510E-01
#end
